// Cameras, plots, comparison, picture and line, as a user works with them.
import assert from "node:assert/strict";
import { after, afterEach, before, beforeEach, test } from "node:test";
import { close, closePage, control, download, go, isSimulated, names, newPage, noise, open } from "./world.mjs";

let page;
before(() => open());
after(() => close());
beforeEach(async () => {
  page = await newPage();
  await control(page, "reset");
});
afterEach(() => closePage(page));

async function addCurve(name) {
  await page.getByRole("searchbox", { name: "Register or field to plot" }).fill(name);
  await page.locator(".candidate").filter({ hasText: new RegExp(`^${name}$`) }).click();
}

test("cameras are listed, and unplugging shows within a second", async () => {
  const card = page.getByRole("listitem").filter({ hasText: names.other });
  await card.getByText("ready").waitFor();
  await card.getByRole("button", { name: "Read its facts" }).click();
  await card.getByText("1 MiB", { exact: false }).first().waitFor();
  await control(page, "unplug", { camera: 1 });
  await card.waitFor({ state: "detached", timeout: 1000 });
  await control(page, "plug", { camera: 1 });
  await card.waitFor({ timeout: 1000 });
});

test("without a camera the page says what to do, and runs the doctor", async () => {
  for (const camera of [0, 1, 2]) await control(page, "unplug", { camera });
  await page.getByRole("heading", { name: "No camera is attached" }).waitFor();
  await page.getByText("virtual-camera.exe register").waitFor();
  await page.getByRole("button", { name: "Run doctor" }).click();
  await page.getByText("the system lists no video device at all").waitFor();
  for (const camera of [0, 1, 2]) await control(page, "plug", { camera });
});

test("the chosen camera that is unplugged is named on the other views", async () => {
  await go(page, "Registers");
  await control(page, "unplug", { camera: 0 });
  await page.getByRole("alert").filter({ hasText: `${names.camera} is unplugged` }).waitFor({ timeout: 1500 });
  await control(page, "plug", { camera: 0 });
  await page.getByRole("alert").waitFor({ state: "detached" });
});

test("a curve is plotted; pause, zoom, cursor values and CSV", async () => {
  await go(page, "Plots");
  await addCurve(names.measured);
  const now = page.locator(`[data-curve="${names.measured}"]`);
  await page.waitForFunction((label) => document.querySelector(`[data-curve="${label}"]`)?.textContent !== "", names.measured);
  await page.waitForTimeout(1500);
  await page.getByRole("button", { name: "Pause" }).click();
  const held = await now.textContent();
  await page.waitForTimeout(600);
  assert.equal(await now.textContent(), held);
  await page.getByRole("button", { name: "Zoom in" }).click();
  assert.equal(await page.getByLabel("Show").inputValue(), "zoom");
  await page.getByLabel(/^Chart\./).focus();
  await page.keyboard.press("Escape");
  await page.getByRole("button", { name: "Pause" }).click();
  await page.getByLabel(/^Chart\./).focus();
  await page.keyboard.press("ArrowLeft");
  await page.keyboard.press("ArrowLeft");
  await page.getByRole("columnheader", { name: /^\d\d:\d\d:\d\d\.\d{3}$/ }).waitFor();
  const file = await download(page, () => page.getByRole("button", { name: "CSV" }).click());
  const lines = file.bytes.toString().trim().split("\r\n");
  assert.equal(lines[0], `time,${names.measured}`);
  assert.match(lines[1], /^\d{4}-\d\d-\d\dT[\d:.]+Z,\d+$/);
  assert.ok(lines.length > 10);
});

test("a drag over the chart zooms", async () => {
  await go(page, "Plots");
  await addCurve(names.measured);
  await page.waitForTimeout(1200);
  const box = await page.locator(".u-over").boundingBox();
  await page.mouse.move(box.x + box.width * 0.6, box.y + 100);
  await page.mouse.down();
  await page.mouse.move(box.x + box.width * 0.9, box.y + 120, { steps: 5 });
  await page.mouse.up();
  assert.equal(await page.getByLabel("Show").inputValue(), "zoom");
  await page.getByRole("button", { name: "Resume" }).click();
});

test("twenty curves at ten values a second are drawn without a stutter (simulated)", { skip: !isSimulated }, async () => {
  await go(page, "Plots");
  await addCurve(names.measured);
  for (let point = 0; point < 19; point++) await addCurve(`SHADING.POINT${point}`);
  await page.waitForTimeout(1000);
  // Measures the processor time of the page's thread, because frame times also depend on other work
  // on the machine.
  const developer = await page.context().newCDPSession(page);
  await developer.send("Performance.setTimeDomain", { timeDomain: "threadTicks" }).catch(() => {});
  await developer.send("Performance.enable", { timeDomain: "threadTicks" });
  const busy = async () => (await developer.send("Performance.getMetrics")).metrics.find(({ name }) => name === "TaskDuration").value;
  const [first, began] = [await busy(), performance.now()];
  await page.waitForTimeout(3000);
  const share = (await busy() - first) / ((performance.now() - began) / 1000);
  assert.ok(share < 0.5, `drawing takes ${(share * 100).toFixed(0)} % of a processor`);
  assert.match(await page.locator(".view-head").textContent(), /20 curves/);
});

test("two sides are compared and the differences applied", async () => {
  await go(page, "Compare");
  await page.getByRole("combobox", { name: "Left" }).selectOption("reset");
  await page.getByRole("region", { name: "Comparison" }).getByRole("button", { name: "Compare" }).click();
  const table = page.getByRole("table", { name: "Registers that differ" });
  const row = table.getByRole("row").filter({ hasText: names.exposure });
  await row.getByText(names.exposureReset).waitFor();
  await page.getByRole("button", { name: `Write left values to ${names.camera}` }).click();
  await page.getByText(/registers? written to/).waitFor();
  await page.getByText("Both sides are equal.").waitFor();
});

test("two cameras are compared and one gets the other's values", async () => {
  await control(page, "poke", { camera: 1, name: names.exposure, value: 0x777 });
  await go(page, "Compare");
  await page.getByRole("combobox", { name: "Left" }).selectOption({ label: `${names.other} (now)` });
  await page.getByRole("region", { name: "Comparison" }).getByRole("button", { name: "Compare" }).click();
  const table = page.getByRole("table", { name: "Registers that differ" });
  await table.getByRole("row").filter({ hasText: names.exposure }).getByText("0x000777").waitFor();
  await table.getByRole("checkbox", { name: "All registers" }).uncheck();
  await table.getByRole("checkbox", { name: names.exposure }).check();
  await page.getByRole("button", { name: `Write left values to ${names.camera}` }).click();
  await page.getByText("1 register written").waitFor();
  await page.waitForTimeout(300);
  assert.equal(await table.getByRole("row").filter({ hasText: names.exposure }).count(), 0);
});

test("yesterday's list is compared with the camera", async () => {
  await go(page, "Compare");
  await page.getByLabel("List file for the left side").setInputFiles([
    { name: "yesterday.txt", mimeType: "text/plain", buffer: Buffer.from(`${names.exposure} = 0x99\n`) }]);
  await page.getByRole("region", { name: "Comparison" }).getByRole("button", { name: "Compare" }).click();
  await page.getByRole("row").filter({ hasText: names.exposure }).getByText("0x000099").waitFor();
});

test("a preset is applied after a question, and exported as a list file", async () => {
  await go(page, "Compare");
  const preset = page.getByRole("complementary", { name: "Presets" }).getByRole("listitem").filter({ hasText: names.preset }).first();
  await preset.getByRole("button", { name: "Apply" }).click();
  await page.getByRole("dialog").getByRole("button", { name: "Apply" }).click();
  await page.getByText(`The preset ${names.preset} is applied`).waitFor();
  await preset.getByRole("button", { name: "Compare" }).click();
  await page.getByText("Both sides are equal.").waitFor();
  const file = await download(page, () => preset.getByRole("button", { name: /^Export/ }).click());
  assert.match(file.bytes.toString(), new RegExp(`^${names.exposure}=`, "m"));
  assert.equal(file.name, `${names.preset}.txt`);
  await page.getByLabel("Name of the preset").fill("evening");
  await page.getByLabel("Registers, fields or patterns").fill(names.exposure);
  await page.getByRole("button", { name: "Save as preset" }).click();
  await page.getByRole("complementary", { name: "Presets" }).getByRole("listitem").filter({ hasText: "evening" }).waitFor();
});

test("the picture is off until asked for; histogram and still", async () => {
  await go(page, "Picture");
  assert.equal(await page.locator("video").count(), 0);
  await page.getByRole("button", { name: "Show the picture" }).click();
  await page.waitForFunction(() => (document.querySelector("video")?.videoWidth ?? 0) > 0);
  await page.waitForFunction(() => Number(document.querySelector("[data-role=mean]")?.textContent) > 0);
  await page.getByRole("button", { name: "Still", exact: true }).click();
  await page.getByRole("img", { name: "The still that was held" }).waitFor();
  const file = await download(page, () => page.getByRole("button", { name: "Save the still" }).click());
  assert.equal(file.bytes.subarray(1, 4).toString(), "PNG");
  await go(page, "Registers");
  await page.getByRole("switch", { name: "Picture" }).check();
  await page.locator(".register-side video").waitFor();
  await page.getByRole("button", { name: "Off", exact: true }).click();
  await page.getByRole("button", { name: "Show the picture" }).waitFor();
});

test("several cameras are programmed side by side, with a report", async () => {
  await go(page, "Line");
  await page.locator("[data-role=images]").setInputFiles([
    { name: `firmware-0x${names.imageAddress.toString(16)}.bin`, mimeType: "a/b", buffer: noise(60_000, 5) }]);
  await page.getByRole("button", { name: "Plan all" }).click();
  const button = page.getByRole("button", { name: "Program 3 cameras" });
  await button.waitFor();
  assert.equal(await page.getByText(/sectors to write/).count(), 3);
  await button.click();
  await page.getByRole("progressbar", { name: new RegExp(`^${names.camera}`) }).waitFor();
  await page.getByText("3 of 3 finished").waitFor({ timeout: 60_000 });
  const file = await download(page, () => page.getByRole("button", { name: "Report" }).click());
  const report = JSON.parse(file.bytes);
  assert.deepEqual(report.cameras.map((row) => row.result.verified), [true, true, true], JSON.stringify(report));
});
