// The appearance of every view, light and dark, in two sizes: a screenshot of each, without findings of axe.
import assert from "node:assert/strict";
import { after, before, test } from "node:test";
import { chooseCamera, close, closePage, control, findings, findRegister, go, names, newPage, noise, open, shoot } from "./world.mjs";

before(() => open());
after(() => close());

const program = (page) => page.getByRole("region", { name: "Program" });

async function addCurves(page, list) {
  for (const name of list) {
    await page.getByRole("searchbox", { name: "Register or field to plot" }).fill(name);
    await page.locator(".candidate").filter({ hasText: new RegExp(`^${name}$`) }).click();
  }
}

const scenes = [
  ["cameras", async (page) => {
    await go(page, "Cameras");
    await page.getByRole("button", { name: "Run doctor" }).click();
    await page.getByRole("table", { name: "Video devices" }).waitFor();
  }],
  ["registers", async (page) => {
    await go(page, "Registers");
    await page.getByLabel("Preset").selectOption(names.preset);
    await findRegister(page, names.exposure);
    await page.locator("#register-editor").getByLabel("Hex").fill("0x1400");
    await page.keyboard.press("Enter");
    await findRegister(page, names.enumerated);
    await page.getByRole("combobox", { name: new RegExp(`^${names.enumeratedField}`) }).selectOption("1");
    await page.getByRole("searchbox", { name: "Search by name" }).fill("");
    await page.getByRole("treegrid").focus();
    await page.keyboard.press("ArrowRight");
    await page.waitForTimeout(400);
  }],
  ["registers-picture", async (page) => {
    await go(page, "Registers");
    await page.getByRole("switch", { name: "Picture" }).check();
    await page.getByRole("button", { name: "Show the picture" }).click();
    await page.waitForFunction(() => (document.querySelector("video")?.videoWidth ?? 0) > 0);
    await page.getByRole("switch", { name: "Live" }).check();
    await page.waitForTimeout(1200);
  }],
  ["registers-grid", async (page) => {
    await go(page, "Registers");
    await chooseCamera(page, names.withoutProfile);
    await page.getByRole("button", { name: "Read once" }).click();
    await page.waitForTimeout(400);
  }],
  ["plots", async (page) => {
    await go(page, "Plots");
    await addCurves(page, [names.measured, "EXPOSURE.TEMPERATURE", names.exposure, "STATUS.FRAME_COUNT"]);
    await page.getByText("Own scales").click();
    await page.getByLabel("Show").selectOption("10");
    await page.waitForTimeout(3000);
  }],
  ["compare", async (page) => {
    await go(page, "Compare");
    await page.getByRole("region", { name: "Comparison" }).getByRole("button", { name: "Compare" }).click();
    await page.getByRole("table", { name: "Registers that differ" }).waitFor();
  }],
  ["flash", async (page) => {
    await go(page, "Flash");
    await page.getByRole("slider", { name: "Sectors of the flash" }).waitFor();
    await page.locator(".hex-row .byte").first().waitFor();
    await page.waitForTimeout(500);
  }],
  ["flash-plan", async (page) => {
    await go(page, "Flash");
    await page.locator("[data-role=images]").setInputFiles([
      { name: `firmware-0x${names.imageAddress.toString(16)}.bin`, mimeType: "a/b", buffer: noise(150_000, 8) }]);
    await page.getByRole("button", { name: "Plan", exact: true }).click();
    await page.getByRole("region", { name: "Plan" }).waitFor();
  }],
  ["flash-programming", async (page) => {
    await control(page, "pace", { pace: 700 });
    await program(page).getByRole("button", { name: /^Program \d/ }).click();
    await page.getByText(/[1-9]\d %/).first().waitFor();
  }],
  ["flash-stopped", async (page) => {
    await page.getByRole("region", { name: "Progress" }).getByRole("button", { name: "Stop" }).click();
    await page.getByRole("alert").filter({ hasText: "stopped by the user" }).waitFor();
    await page.getByRole("slider", { name: "Sectors of the flash" }).waitFor();
    await page.waitForTimeout(900);
    await control(page, "pace", { pace: 25 });
  }],
  ["flash-verify", async (page) => {
    await page.getByRole("button", { name: "Verify" }).click();
    await page.getByText(/bytes differ, in/).waitFor();
    await page.locator(".byte.differs").first().waitFor();
    await page.waitForTimeout(400);
  }],
  ["flash-journals", async (page) => {
    await control(page, "journals", { journals: [
      { state: "waits", number: 2, image: "boot.hex", place: "0x20000-0x22327", sector: "0x22000-0x22fff", begun: "2026-11-21T20:44:28Z" },
      { state: "asks", number: 3, image: "C:\\line\\app.bin", place: "0x10010-0x1fffe", sector: "0x1f000-0x1ffff", begun: "2026-11-21T21:02:11Z" }] });
    await go(page, "Flash");
    await page.locator("[data-role=images]").setInputFiles([
      { name: `firmware-0x${names.imageAddress.toString(16)}.bin`, mimeType: "a/b", buffer: noise(150_000, 8) }]);
    await page.getByRole("button", { name: "Plan", exact: true }).click();
    await page.getByRole("region", { name: "Unfinished work" }).waitFor();
    await page.waitForTimeout(400);
  }],
  ["line", async (page) => {
    await control(page, "pace", { pace: 60 });
    await go(page, "Line");
    await page.locator("[data-role=images]").setInputFiles([
      { name: `firmware-0x${names.imageAddress.toString(16)}.bin`, mimeType: "a/b", buffer: noise(150_000, 12) }]);
    await page.getByRole("button", { name: "Plan all" }).click();
    await page.getByRole("button", { name: "Program 3 cameras" }).click();
    await page.getByText(/program [3-9]\d %/).first().waitFor();
    await page.getByRole("button", { name: `Stop ${names.other}` }).click();
    await page.getByRole("button", { name: "Repeat" }).waitFor({ state: "hidden" });
    await page.waitForTimeout(500);
  }],
  ["picture", async (page) => {
    await go(page, "Picture");
    await page.getByRole("button", { name: "Show the picture" }).click();
    await page.waitForFunction(() => (document.querySelector("video")?.videoWidth ?? 0) > 0);
    await page.getByRole("button", { name: "Still", exact: true }).click();
    await page.waitForTimeout(700);
  }],
  ["log", async (page) => {
    await go(page, "Registers");
    await findRegister(page, names.exposure);
    await page.locator("#register-editor").getByLabel("Hex").fill("0x123");
    await page.keyboard.press("Enter");
    await page.getByRole("button", { name: "Write all" }).click();
    await page.getByText("No changes wait.").waitFor();
    await go(page, "Log");
  }],
  ["no-camera", async (page) => {
    await go(page, "Cameras");
    for (const camera of [0, 1, 2]) await control(page, "unplug", { camera });
    await page.getByRole("heading", { name: "No camera is attached" }).waitFor();
  }],
  ["unplugged", async (page) => {
    await go(page, "Registers");
    await page.waitForTimeout(500);
    await control(page, "unplug", { camera: 0 });
    await page.getByRole("alert").waitFor();
  }],
];
// These scenes continue where the previous one ended.
const continued = new Set(["flash-programming", "flash-stopped", "flash-verify"]);

// Headings and rows of tables that can't be seen, or reached by scrolling a region that takes the keyboard.
function lostCells() {
  const lost = [];
  for (const cell of document.querySelectorAll("th, td, [role=columnheader], [role=gridcell], .image-list li > *:not(.grow)")) {
    const box = cell.getBoundingClientRect();
    const text = cell.textContent.trim();
    if (cell.querySelector(".out-of-sight") || (text === "" && cell.childElementCount === 0)) continue;
    const frame = cell.closest(".scroll-list, [tabindex='0'], .panel, main");
    const frameBox = frame.getBoundingClientRect();
    const scrolls = frame.matches("[tabindex='0']") && ["auto", "scroll"].includes(getComputedStyle(frame).overflowX);
    if (box.width === 0 || (!scrolls && box.right > frameBox.right + 1)) lost.push(`${text}: not in view`);
    if (cell.matches("li > code") && cell.scrollWidth > cell.clientWidth + 1 && cell.clientWidth > 0) lost.push(`${text}: cut off`);
    if (cell.matches("th[scope=col], [role=columnheader]") && cell.scrollWidth > cell.clientWidth) lost.push(`${text}: cut off`);
  }
  return lost;
}

// A screenshot of the page in each colour scheme, without findings of axe.
async function shootInBothColours(page, name, context) {
  for (const colorScheme of ["light", "dark"]) {
    await context.test(`${name}, ${colorScheme}`, async () => {
      await page.emulateMedia({ colorScheme });
      await page.evaluate(() => new Promise((resolve) => { requestAnimationFrame(() => requestAnimationFrame(resolve)); }));
      await shoot(page, `${name}-${colorScheme}`);
      assert.deepEqual(await findings(page), []);
    });
  }
}

// Scenes that are also shown in the smallest window, where nothing of their tables may be lost.
const smallScenes = new Set(["cameras", "registers", "registers-picture", "registers-grid", "compare", "flash", "flash-plan",
                             "flash-journals", "line", "log"]);

test("every view, light and dark, and in a window of 1024 by 768", { timeout: 480_000 }, async (context) => {
  let page = null;
  for (const [name, act] of scenes) {
    await context.test(name, async (scene) => {
      if (!continued.has(name)) {
        if (page) await closePage(page);
        page = await newPage();
        await control(page, "reset");
        await control(page, "pace", { pace: 25 });
      }
      await act(page);
      await shootInBothColours(page, name, scene);
      if (!smallScenes.has(name)) return;
      await page.setViewportSize({ width: 1024, height: 768 });
      if (name === "registers-grid") {
        await page.getByLabel("Device").selectOption("Chip, 32 bits");
        await page.getByRole("button", { name: "Read once" }).click();
        await page.waitForTimeout(400);
      }
      await shootInBothColours(page, `small-${name}`, scene);
      assert.deepEqual(await page.evaluate(lostCells), []);
      await page.setViewportSize({ width: 1440, height: 900 });
    });
  }
  await closePage(page);
});

test("the smallest window, 1024 by 700, is not wider than itself", async () => {
  const page = await newPage({ viewport: { width: 1024, height: 700 } });
  await control(page, "reset");
  for (const title of ["Cameras", "Registers", "Plots", "Compare", "Flash", "Line", "Picture", "Log"]) {
    await go(page, title);
    await page.waitForTimeout(700);
    const wide = await page.evaluate(() => document.documentElement.scrollWidth > innerWidth || document.querySelector("main").scrollWidth > document.querySelector("main").clientWidth);
    assert.equal(wide, false, `${title} is wider than the window`);
  }
  await closePage(page);
});

test("the switch of colours wins over the system's", async () => {
  const page = await newPage({ colorScheme: "light" });
  const background = () => page.evaluate(() => getComputedStyle(document.body).backgroundColor);
  const light = await background();
  await page.getByRole("button", { name: "Colours: as the system" }).click();
  assert.equal(await background(), light);
  await page.getByRole("button", { name: "Colours: light" }).click();
  assert.notEqual(await background(), light);
  await page.reload();
  assert.notEqual(await background(), light);
  await closePage(page);
});
