// The steps of a user who never typed a command, against the simulated server or the real program.
import assert from "node:assert/strict";
import { after, before, test } from "node:test";
import {
  chooseCamera, close, closePage, control, download, findings, findRegister, go, intelHex, names, newPage, noise, open, shoot,
} from "./world.mjs";

let page;
before(async () => {
  await open();
  page = await newPage();
});
after(async () => {
  await closePage(page);
  await close();
});

const slow = { timeout: 60_000 };

test("find the camera", { timeout: 60_000 }, async () => {
  const card = page.getByRole("listitem").filter({ hasText: names.camera });
  await card.waitFor(slow);
  await card.getByRole("button", { name: "Read its facts" }).click();
  await card.getByText("I2C lists").waitFor(slow);
  await chooseCamera(page, names.camera);
  await page.getByRole("button", { name: "Run doctor" }).click();
  await page.getByRole("table", { name: "Video devices" }).waitFor(slow);
  await shoot(page, "walk-cameras");
});

test("change an exposure and see it plotted", { timeout: 120_000 }, async () => {
  await go(page, "Registers");
  await page.getByRole("treegrid").waitFor(slow);
  await findRegister(page, names.exposure);
  await page.getByRole("button", { name: "Plot this register" }).click();
  for (const value of ["0x001234", "0x002000"]) {
    await page.locator("#register-editor").getByLabel("Hex").fill(value);
    await page.keyboard.press("Enter");
    await page.getByRole("button", { name: "Write all" }).click();
    await page.getByText("No changes wait.").waitFor(slow);
    await page.waitForTimeout(500);
  }
  await shoot(page, "walk-registers");
  await go(page, "Plots");
  const value = page.locator(`[data-curve="${names.exposure}"]`);
  await page.waitForFunction((name) => document.querySelector(`[data-curve="${name}"]`)?.textContent === "8192", names.exposure, slow);
  await page.waitForTimeout(1500);
  assert.equal(await value.textContent(), "8192");
  await shoot(page, "walk-plots");
  const file = await download(page, () => page.getByRole("button", { name: "CSV" }).click());
  assert.match(file.bytes.toString(), /,4660\r\n[^]*,8192\r\n/);
});

test("compare with yesterday's list", { timeout: 60_000 }, async () => {
  await go(page, "Compare");
  await page.getByLabel("List file for the left side").setInputFiles([
    { name: "yesterday.txt", mimeType: "text/plain", buffer: Buffer.from(`${names.exposure}=0x100\n`) }]);
  await page.getByRole("region", { name: "Comparison" }).getByRole("button", { name: "Compare" }).click();
  await page.getByRole("row").filter({ hasText: names.exposure }).getByText("0x000100").waitFor(slow);
  await page.getByRole("row").filter({ hasText: names.exposure }).getByText("0x002000").waitFor();
  await shoot(page, "walk-compare");
  await page.getByRole("button", { name: `Write left values to ${names.camera}` }).click();
  await page.getByText("1 register written").waitFor(slow);
});

test("program firmware from a HEX file and see it verified", { timeout: 240_000 }, async () => {
  await go(page, "Flash");
  await page.getByRole("combobox", { name: "Size" }).selectOption("1M", slow);
  await page.getByRole("slider", { name: "Sectors of the flash" }).waitFor(slow);
  await page.locator("[data-role=images]").setInputFiles([
    { name: "firmware.hex", mimeType: "a/b", buffer: intelHex(names.imageAddress, noise(50_000, 33)) }]);
  await page.getByRole("button", { name: "Plan", exact: true }).click(slow);
  await page.getByRole("region", { name: "Plan" }).waitFor(slow);
  await shoot(page, "walk-plan");
  await page.getByRole("region", { name: "Program" }).getByRole("button", { name: /^Program \d/ }).click();
  await page.getByText("All of it reads back equal.").waitFor({ timeout: 120_000 });
  await page.getByRole("button", { name: "Verify" }).click(slow);
  await page.getByText("Equal: the flash holds firmware.hex.").waitFor(slow);
  await page.getByLabel("Go to address").fill(`0x${names.imageAddress.toString(16)}`);
  await page.keyboard.press("Enter");
  await page.locator(`.hex-row[data-address="${names.imageAddress}"]`).getByText(/^[0-9a-f]{2}$/).first().waitFor(slow);
  await shoot(page, "walk-flash");
});

test("copy the command lines for the production line", async () => {
  await go(page, "Log");
  await page.getByText("Writes", { exact: true }).click();
  await page.getByRole("button", { name: "Copy all lines" }).click();
  const lines = (await page.evaluate(() => navigator.clipboard.readText())).trim().split("\n");
  assert.match(lines[0], new RegExp(`^borvanusb reg write "?${names.exposure}=0x001234"? --verify`));
  assert.ok(lines.some((line) => line.startsWith("borvanusb flash program firmware.hex")), lines.join("\n"));
  await shoot(page, "walk-log");
  assert.deepEqual(await findings(page), []);
});

test("unplug and plug show within a second", { timeout: 60_000 }, async () => {
  await go(page, "Cameras");
  const card = page.getByRole("listitem").filter({ hasText: names.camera });
  await control(page, "unplug", { camera: 0 });
  await card.waitFor({ state: "detached", timeout: 3000 });
  await control(page, "plug", { camera: 0 });
  await card.waitFor({ timeout: 3000 });
});
