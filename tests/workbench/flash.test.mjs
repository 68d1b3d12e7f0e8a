// The flash view, as a user works with it.
import assert from "node:assert/strict";
import { after, afterEach, before, beforeEach, test } from "node:test";
import { close, closePage, control, download, go, intelHex, isSimulated, names, newPage, noise, open } from "./world.mjs";

let page;
before(() => open());
after(() => close());
beforeEach(async () => {
  page = await newPage();
  await control(page, "reset");
  await control(page, "pace", { pace: 25 });
  await go(page, "Flash");
  await page.getByRole("slider", { name: "Sectors of the flash" }).waitFor();
});
afterEach(() => closePage(page));

const program = () => page.getByRole("region", { name: "Program" });
const drop = (name, buffer) => page.locator("[data-role=images]").setInputFiles([{ name, mimeType: "a/b", buffer }]);
const hexRow = (address) => page.locator(`.hex-row[data-address="${address}"]`);
const rawName = `fw-0x${names.imageAddress.toString(16)}.bin`;

// Waits until sectors are erased and written; before that the flash is only read.
async function programming() {
  await page.getByRole("progressbar", { name: /Programming: (erase|program)/ }).waitFor();
  await page.getByRole("region", { name: "Progress" }).getByText(/[1-9]\d? %/).waitFor();
}

async function planned() {
  await page.getByRole("button", { name: "Plan", exact: true }).click();
  await page.getByRole("region", { name: "Plan" }).waitFor();
  // A plan must never look like finished work.
  assert.equal(await page.getByText(/^Programmed/).count(), 0);
}

test("the map shows regions and sectors; a region's name leads to its bytes", async () => {
  await page.getByText(/used \d+/).first().waitFor();
  await page.getByRole("table", { name: "Regions of the flash" }).getByRole("button", { name: names.region, exact: true }).click();
  await hexRow(names.imageAddress).getByText(/^[0-9a-f]{2}$/).first().waitFor();
});

test("the map is walked with the keyboard", async () => {
  const map = page.getByRole("slider", { name: "Sectors of the flash" });
  await map.focus();
  await page.keyboard.press("ArrowDown");
  await page.waitForFunction(() => document.querySelector(".sectors").getAttribute("aria-valuetext") === "0x20000: used, firmware");
  await hexRow(0x20000).getByText(/^[0-9a-f]{2}$/).first().waitFor();
});

test("the hex view jumps, searches and reads what is scrolled to", async () => {
  await page.getByLabel("Go to address").fill("0x80000");
  await page.keyboard.press("Enter");
  await hexRow(0x80000).getByText(/^[0-9a-f]{2}$/).first().waitFor();
  await page.getByLabel("Go to address").fill("2M");
  await page.keyboard.press("Enter");
  await page.getByText("An address is a number below 0x100000.").waitFor();
  await page.getByLabel("Go to address").fill("0");
  await page.keyboard.press("Enter");
  await page.getByLabel("Search bytes or text").fill('"SERIAL"');
  await page.keyboard.press("Enter");
  await page.getByText("Found at 0xfc010.").waitFor({ timeout: 30_000 });
  assert.equal(await page.locator(".byte.found").count(), 6);
});

test("an image in Intel HEX is planned, programmed and verified", async () => {
  const bytes = noise(200_000, 3);
  await drop("firmware.hex", intelHex(names.imageAddress, bytes));
  assert.equal(await program().getByRole("button", { name: "Program" }).isDisabled(), true);
  await planned();
  await page.getByRole("region", { name: "Plan" }).getByText(/of which/).waitFor();
  await page.getByText(/differs [1-9]/).first().waitFor();
  await program().getByRole("button", { name: /^Program \d/ }).click();
  await page.getByRole("region", { name: "Progress" }).getByText(/left/).waitFor();
  await page.getByText("All of it reads back equal.").waitFor({ timeout: 60_000 });
  const report = await download(page, () => page.getByRole("button", { name: "Report" }).click());
  assert.equal(JSON.parse(report.bytes).verified, true);
  await page.getByRole("button", { name: "Verify" }).click();
  await page.getByText("Equal: the flash holds firmware.hex.").waitFor();
});

test("the differences that verify finds are marked in the hex view", async () => {
  await drop(rawName, noise(8192, 9));
  await page.getByRole("button", { name: "Verify" }).click();
  await page.getByText(/bytes differ, in/).waitFor();
  await page.locator(".byte.differs").first().waitFor();
  await page.getByRole("button", { name: "Next difference" }).click();
});

test("an image for a read-only region can't be chosen, one that is too large is refused before anything is touched", async () => {
  await drop("big.bin", noise(70_000, 1));
  const place = page.getByLabel("Where big.bin goes");
  assert.equal(await place.locator(`option[value="region:${names.readOnlyRegion}"]`).evaluate((option) => option.disabled), true);
  await place.selectOption("region:config");
  await page.getByRole("button", { name: "Plan", exact: true }).click();
  await page.getByRole("alert").filter({ hasText: /big\.bin does not fit into the region config/ }).waitFor();
  assert.equal(await program().getByRole("button", { name: "Program" }).isDisabled(), true);
});

test("programming stops at a safe place, says how to go on, and goes on", async () => {
  await drop(rawName, noise(400_000, 2));
  await planned();
  await program().getByRole("button", { name: /^Program \d/ }).click();
  await programming();
  await page.getByRole("region", { name: "Progress" }).getByRole("button", { name: "Stop" }).click();
  const alert = page.getByRole("alert").filter({ hasText: "stopped by the user" });
  await alert.waitFor();
  await alert.getByText("To continue:").waitFor();
  await control(page, "pace", { pace: 2 });
  await alert.getByRole("button", { name: "Continue" }).click();
  await page.getByText("All of it reads back equal.").waitFor({ timeout: 60_000 });
});

test("a camera that is pulled while it is programmed: what is unsure is said, the journal is offered", async () => {
  await drop(rawName, noise(400_000, 4));
  await planned();
  await program().getByRole("button", { name: /^Program \d/ }).click();
  await programming();
  await control(page, "unplug", { camera: 0 });
  await page.getByRole("alert").filter({ hasText: "the flash is changed in part" }).waitFor();
  await control(page, "plug", { camera: 0 });
  await page.getByRole("button", { name: "Plan", exact: true }).click();
  if (isSimulated) {
    const unfinished = page.getByRole("region", { name: "Unfinished work" });
    await unfinished.getByText(`flash program of ${rawName}`).waitFor();
    await unfinished.getByText("This work continues it").waitFor();
    return;
  }
  // The journal of a virtual camera waits only if its shared sector was cut. The rest is programmed in any case.
  await page.getByRole("region", { name: "Plan" }).getByText(/of which/).waitFor();
  await program().getByRole("button", { name: /^Program \d/ }).click();
  await page.getByText("All of it reads back equal.").waitFor();
});

test("a file that is dropped while another is still taken does not replace it", async () => {
  await page.route("**/api/files?name=slow*", async (route) => {
    await new Promise((resolve) => { setTimeout(resolve, 400); });
    await route.continue();
  });
  await drop("slow-0x20000.bin", noise(9000, 5));
  await drop(rawName, noise(5000, 4));
  await page.getByRole("button", { name: "Remove slow-0x20000.bin" }).waitFor();
  await page.getByRole("button", { name: `Remove ${rawName}` }).waitFor({ timeout: 2000 });
});

const begun = "2026-11-21T20:44:28Z";

test("all journals that the plan names are listed; one of a file of this run is planned again (simulated)", { skip: !isSimulated }, async () => {
  await drop("boot-0x20000.bin", noise(9000, 5));
  await drop(rawName, noise(5000, 4));
  await control(page, "journals", { journals: [
    { state: "waits", number: 2, image: "boot-0x20000.bin", place: "0x20000-0x22327", sector: "0x22000-0x22fff", begun },
    { state: "waits", number: 3, image: "C:\\line\\other.bin", place: "0x40010-0x4001f", sector: "0x40000-0x40fff", begun }] });
  await page.getByRole("button", { name: "Remove boot-0x20000.bin" }).click();
  await planned();
  const unfinished = page.getByRole("region", { name: "Unfinished work" });
  assert.equal(await unfinished.getByRole("listitem").count(), 2);
  await unfinished.getByText("flash program of other.bin").waitFor();
  await unfinished.getByText("To continue it, choose the same image again.").waitFor();
  await unfinished.getByRole("button", { name: "Plan boot-0x20000.bin" }).click();
  await page.getByRole("region", { name: "Plan" }).getByText(/boot-0x20000.bin, 8.8 KiB, from 0x20000/).waitFor();
});

test("a journal of an unknown camera is asked about before the plan, and the answer stays with the work (simulated)", { skip: !isSimulated }, async () => {
  await control(page, "journals", { journals: [
    { state: "asks", number: 4, image: "C:\\line\\fw.bin", place: "0x10010-0x1fffe", sector: "0x1f000-0x1ffff", begun }] });
  await drop(rawName, noise(5000, 4));
  await page.getByRole("button", { name: "Plan", exact: true }).click();
  const unfinished = page.getByRole("region", { name: "Unfinished work" });
  await unfinished.getByText(/Reason: the rest of this flash is blank/).waitFor();
  await unfinished.getByRole("button", { name: "It was another camera" }).waitFor();
  await unfinished.getByRole("button", { name: "It was this camera: use the journal" }).click();
  await unfinished.getByText("This work continues it").waitFor();
  await page.getByRole("region", { name: "Plan" }).waitFor();
  await program().getByRole("group", { name: "Command line" }).getByText(/--journal .*\.journal/).waitFor();
  await program().getByRole("button", { name: /^Program \d/ }).click();
  await page.getByText("All of it reads back equal.").waitFor({ timeout: 60_000 });
  await unfinished.waitFor({ state: "detached" });
});

test("the page that is closed while programming comes back and shows it", async () => {
  await drop(rawName, noise(440_000, 6));
  await planned();
  await program().getByRole("button", { name: /^Program \d/ }).click();
  await programming();
  await page.reload();
  await page.getByText("This camera is being programmed").waitFor();
  await page.getByRole("region", { name: "Progress" }).getByRole("button", { name: "Stop" }).click();
  await page.getByText("This camera is being programmed").waitFor({ state: "detached", timeout: 20_000 });
  await page.getByRole("alert").filter({ hasText: "stopped by the user" }).waitFor();
});

test("backup of the whole flash, and a region erased after a question", async () => {
  const backup = await download(page, () => page.getByRole("button", { name: "Backup of the whole flash" }).click());
  assert.equal(backup.bytes.length, 1 << 20);
  await page.getByRole("button", { name: "Erase config" }).click();
  await page.getByRole("dialog").getByRole("button", { name: /^Erase/ }).click();
  await page.getByRole("row").filter({ hasText: "config" }).getByText("0 %").waitFor();
});
