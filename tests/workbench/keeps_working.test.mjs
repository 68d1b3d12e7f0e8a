// The page keeps working after failures, and over a long time.
import assert from "node:assert/strict";
import { after, afterEach, before, beforeEach, test } from "node:test";
import { close, closePage, control, findRegister, go, isSimulated, names, newPage, noise, open } from "./world.mjs";

let page;
before(() => open());
after(() => close());
beforeEach(async () => {
  page = await newPage();
  await control(page, "reset");
});
afterEach(() => closePage(page));

test("two pages see the same cameras, and the work of each other", async () => {
  const other = await newPage();
  await control(page, "pace", { pace: 250 });
  await go(page, "Flash");
  await page.locator("[data-role=images]").setInputFiles([
    { name: `fw-0x${names.imageAddress.toString(16)}.bin`, mimeType: "a/b", buffer: noise(300_000, 21) }]);
  await page.getByRole("button", { name: "Plan", exact: true }).click();
  await page.getByRole("button", { name: /^Program \d/ }).click();
  await other.getByRole("banner").getByRole("progressbar").waitFor();
  await other.getByRole("listitem").filter({ hasText: names.camera }).getByText("flash program").waitFor();
  await go(other, "Registers");
  await other.getByRole("alert").filter({ hasText: /Another command is using this camera: borvanusb flash program/ }).first().waitFor();
  await page.getByRole("region", { name: "Progress" }).getByRole("button", { name: "Stop" }).click();
  await page.getByRole("alert").filter({ hasText: "stopped by the user" }).waitFor();
  await control(page, "pace", { pace: 25 });
  await closePage(other);
});

test("two pages read the same camera live, each its own registers, until it closes (simulated)", { skip: !isSimulated }, async () => {
  const other = await newPage();
  for (const each of [page, other]) await go(each, "Registers");
  const row = await findRegister(page, names.enumerated);
  await page.getByText("Live", { exact: true }).click();
  const otherRow = await findRegister(other, names.slider);
  await other.getByText("Live", { exact: true }).click();
  await control(page, "poke", { name: names.enumerated, value: 2 });
  await control(page, "poke", { name: names.slider, value: 9 });
  await row.getByText("0x02").first().waitFor();
  await otherRow.getByText("0x09").first().waitFor();
  const reads = async () => (await control(page, "look")).reads;
  await closePage(other);
  await page.waitForTimeout(400);
  const before = await reads();
  await control(page, "poke", { name: names.enumerated, value: 1 });
  await row.getByText("0x01").first().waitFor();
  await page.waitForTimeout(600);
  const later = await reads();
  assert.equal(later[names.slider], before[names.slider]);
  assert.ok(later[names.enumerated] > before[names.enumerated]);
});

test("a lost connection is said, and made again (simulated)", { skip: !isSimulated }, async () => {
  await control(page, "connections");
  const alert = page.getByRole("alert").filter({ hasText: "The connection to the workbench is lost." });
  await alert.waitFor();
  await alert.waitFor({ state: "detached", timeout: 15_000 });
  await control(page, "unplug", { camera: 1 });
  await page.getByRole("listitem").filter({ hasText: names.other }).waitFor({ state: "detached" });
});

test("live values go on after the camera was unplugged and plugged again", async () => {
  await go(page, "Registers");
  const row = await findRegister(page, names.enumerated);
  await page.getByText("Live", { exact: true }).click();
  await control(page, "unplug", { camera: 0 });
  await page.getByText(`${names.camera} is unplugged.`).waitFor();
  await control(page, "plug", { camera: 0 });
  await page.getByText(`${names.camera} is unplugged.`).waitFor({ state: "detached" });
  await control(page, "poke", { name: names.enumerated, value: 3 });
  await row.getByText("0x03").first().waitFor();
});

test("20,000 readings leave the memory as it was (simulated)", { skip: !isSimulated, timeout: 240_000 }, async () => {
  await go(page, "Plots");
  const curves = [names.measured, names.exposure, ...Array.from({ length: 8 }, (_, point) => `SHADING.POINT${point}`)];
  for (const name of curves) {
    await page.getByRole("searchbox", { name: "Register or field to plot" }).fill(name);
    await page.locator(".candidate").filter({ hasText: new RegExp(`^${name}$`) }).click();
  }
  const developer = await page.context().newCDPSession(page);
  const used = async () => {
    await developer.send("HeapProfiler.collectGarbage");
    return (await developer.send("Runtime.getHeapUsage")).usedSize;
  };
  const samples = () => page.evaluate(() => Number(/([\d,]+) samples?/.exec(document.querySelector(".view-head").textContent)[1].replaceAll(",", "")));
  let start = Date.now() / 1000 + 100;
  const flood = async (count) => {
    const goal = (await samples()) + count;
    await control(page, "flood", { count, start, words: curves });
    start += count / 10;
    await page.waitForFunction((least) => Number(/([\d,]+) samples?/.exec(document.querySelector(".view-head").textContent)[1].replaceAll(",", "")) >= least, goal, { timeout: 60_000 });
  };
  await flood(1000);
  const first = await used();
  for (let part = 0; part < 20; part++) await flood(1000);
  const grown = (await used()) - first;
  assert.ok(grown < 3_000_000, `${grown} bytes more`);
});
