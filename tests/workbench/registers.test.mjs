// The registers view, as a user works with it.
import assert from "node:assert/strict";
import { after, before, beforeEach, afterEach, test } from "node:test";
import { chooseCamera, close, closePage, control, findRegister, go, isSimulated, names, newPage, open } from "./world.mjs";

let page;
before(() => open());
after(() => close());
beforeEach(async () => {
  page = await newPage();
  await control(page, "reset");
  await go(page, "Registers");
});
afterEach(() => closePage(page));

const editor = (label) => page.locator("#register-editor").getByLabel(label);
// Waits until the editor shows a value, because it is drawn with the next frame.
const shows = (label, value) => page.waitForFunction(([name, text]) => [...document.querySelectorAll("#register-editor label")]
  .find((each) => each.textContent.startsWith(name))?.querySelector("input").value === text, [label, value]);
const valueOf = (row) => row.getByRole("gridcell").nth(2);

async function readBack(name) {
  const answer = await page.evaluate(async (register) => {
    const { cameras } = await (await fetch("/api/state")).json();
    const body = JSON.stringify({ words: ["reg", "read", register], camera: cameras[0].path });
    return (await fetch("/api/run", { method: "POST", headers: { "Content-Type": "application/json" }, body })).json();
  }, name);
  return answer.result.registers[0].value;
}

test("the tree shows registers with their values, and what is in view is read once", async () => {
  const row = page.getByRole("row").filter({ hasText: names.readOnly.split(".")[1] }).first();
  await row.getByText(/^0x[0-9a-f]+$/).nth(1).waitFor();
  assert.match(await valueOf(row).textContent(), /^0x[0-9a-f]+$/);
});

test("search finds names, numbers and documentation", async () => {
  for (const text of [names.exposure, "integration time", "0x3500"]) {
    await page.getByRole("searchbox", { name: "Search by name" }).fill(text);
    await page.getByRole("row").filter({ hasText: "EXPOSURE" }).first().waitFor();
    assert.ok((await page.getByRole("row").count()) < 12, text);
  }
  await page.getByRole("searchbox", { name: "Search by name" }).fill("no such thing");
  await page.getByText("No register matches.").waitFor();
});

test("a number is entered in hexadecimal, decimal or binary digits, and Write all writes it", async () => {
  await findRegister(page, names.exposure);
  await editor("Hex").fill("0x400");
  await page.keyboard.press("Enter");
  await shows("Decimal", "1024");
  await editor("Binary").fill("0b1_0000_0000_0000");
  await page.keyboard.press("Enter");
  await shows("Hex", "0x001000");
  await page.getByText("1 change not written").waitFor();
  assert.notEqual(await readBack(names.exposure), 0x1000);
  await page.getByRole("button", { name: "Write all" }).click();
  await page.getByText("No changes wait.").waitFor();
  assert.equal(await readBack(names.exposure), 0x1000);
});

test("a value that is not allowed is refused beside the field", async () => {
  await findRegister(page, names.exposure);
  await editor("Decimal").fill("99999999");
  await page.keyboard.press("Enter");
  await page.getByRole("alert").filter({ hasText: /largest value|Allowed are/ }).waitFor();
  await editor("Decimal").fill("3");
  await page.keyboard.press("Enter");
  await page.getByRole("alert").filter({ hasText: "Allowed are" }).waitFor();
  await page.getByText("No changes wait.").waitFor();
});

test("fields: a list of names, a check box and a slider; several changes are one command", async () => {
  await findRegister(page, names.enumerated);
  const list = page.getByRole("combobox", { name: new RegExp(`^${names.enumeratedField}`) });
  await list.selectOption(await list.locator("option", { hasText: names.enumeratedValue }).first().getAttribute("value"));
  await page.getByRole("checkbox", { name: new RegExp(`^${names.oneBitField}`) }).check();
  await findRegister(page, names.slider);
  const slider = page.getByRole("slider", { name: new RegExp(`^${names.sliderField}`) });
  await slider.focus();
  await page.keyboard.press("ArrowRight");
  await page.keyboard.press("ArrowRight");
  await page.getByText("3 changes not written").waitFor();
  const shown = page.getByRole("region", { name: "Changes" }).getByLabel("Command line").first();
  // The page shows the second step of the slider a moment after the first.
  await shown.filter({ hasText: `${names.sliderField}=0x02` }).waitFor();
  const line = await shown.textContent();
  assert.match(line, new RegExp(`${names.enumerated}.${names.enumeratedField}=0x1`));
  assert.match(line, new RegExp(`${names.enumerated}.${names.oneBitField}=0x1 .*${names.slider}.${names.sliderField}=0x02`));
  await page.getByRole("button", { name: "Write all" }).click();
  await page.getByText("No changes wait.").waitFor();
  assert.equal(await readBack(names.enumerated), 0x81);
  assert.equal(await readBack(names.slider) >> 1, 2);
});

test("a field is written without touching what else changed in its register", async () => {
  await findRegister(page, names.slider);
  await page.getByRole("slider", { name: new RegExp(`^${names.sliderField}`) }).focus();
  await page.keyboard.press("ArrowRight");
  await control(page, "poke", { name: names.slider, value: 0x40 });
  await page.getByRole("button", { name: "Write all" }).click();
  await page.getByText("No changes wait.").waitFor();
  assert.equal(await readBack(names.slider), 0x42);
});

test("the last write is taken back, and each write stands in the log", async () => {
  const old = await readBack(names.exposure);
  await findRegister(page, names.exposure);
  await editor("Hex").fill("0x123");
  await page.keyboard.press("Enter");
  await page.getByRole("button", { name: "Write all" }).click();
  await page.getByText("No changes wait.").waitFor();
  await page.getByRole("button", { name: "Undo last write" }).click();
  await page.getByRole("button", { name: "Writes (2)" }).waitFor();
  assert.equal(await readBack(names.exposure), old);
  await page.getByRole("button", { name: "Writes (2)" }).click();
  const log = page.getByRole("table", { name: "Commands" });
  assert.equal(await log.getByRole("row").count(), 3);
  await log.getByRole("button", { name: "Copy this command line" }).last().click();
  const copied = await page.evaluate(() => navigator.clipboard.readText());
  assert.match(copied, new RegExp(`^borvanusb reg write "?${names.exposure}=0x000123"? --verify --camera`));
});

test("a change by the camera itself is marked and filtered by", async () => {
  const row = await findRegister(page, names.enumerated);
  await page.getByRole("searchbox", { name: "Search by name" }).fill("");
  await control(page, "poke", { name: names.enumerated, value: 3 });
  await page.getByRole("button", { name: "Read once" }).click();
  await page.getByRole("button", { name: /^Changed since last read/ }).click();
  await row.getByText("changed", { exact: true }).waitFor();
  await page.getByRole("button", { name: /^Changed since last read/ }).click();
  await page.getByRole("button", { name: /^Differs from reset/ }).click();
  await row.getByText("≠ reset").waitFor();
});

test("differences from a preset and from a file are marked", async () => {
  await page.getByLabel("Preset").selectOption(names.preset);
  await page.getByRole("button", { name: "Read once" }).click();
  await page.getByRole("button", { name: /^Differs from preset/ }).click();
  const row = page.getByRole("row").filter({ hasText: names.exposure.split(".")[1] });
  await row.getByText("≠ preset").first().waitFor();
  await page.locator("[data-role=reference-file]").setInputFiles([
    { name: "yesterday.txt", mimeType: "text/plain", buffer: Buffer.from(`${names.exposure} = 0x77\n`) }]);
  await page.getByRole("button", { name: "yesterday.txt" }).waitFor();
  await row.getByText("≠ file").first().waitFor();
});

test("a register that reading changes is never read by looking (simulated)", { skip: !isSimulated }, async () => {
  await findRegister(page, names.clearedByReading, false);
  await page.getByRole("button", { name: "Read once" }).click();
  await page.getByText("Live", { exact: true }).click();
  await page.waitForTimeout(700);
  let known = await control(page, "look");
  assert.equal(known.reads[names.clearedByReading], undefined);
  await page.getByRole("button", { name: "Read it now" }).click();
  await page.waitForFunction(() => document.querySelector("#register-editor input").value !== "");
  known = await control(page, "look");
  assert.equal(known.reads[names.clearedByReading], 1);
});

test("live reading follows the camera, and reads only what is visible", async () => {
  const row = await findRegister(page, names.enumerated);
  await page.getByText("Live", { exact: true }).click();
  await control(page, "poke", { name: names.enumerated, value: 2 });
  await valueOf(row).getByText("0x02").waitFor({ timeout: 2000 });
  if (!isSimulated) return;
  const first = (await control(page, "look")).reads;
  await page.waitForTimeout(900);
  const second = (await control(page, "look")).reads;
  assert.ok(second[names.enumerated] > first[names.enumerated]);
  assert.equal(second[names.exposure], first[names.exposure]);
});

test("each change is written at once when asked for", async () => {
  await page.getByText("Write each change at once").click();
  await findRegister(page, names.slider);
  await page.getByRole("slider", { name: new RegExp(`^${names.sliderField}`) }).focus();
  await page.keyboard.press("ArrowRight");
  await page.getByRole("button", { name: /^Writes \([1-9]/ }).waitFor();
  assert.equal(await readBack(names.slider) >> 1, 1);
  await page.getByText("Write each change at once").click();
});

test("without a profile, registers are read and written by number in a grid", async () => {
  await chooseCamera(page, names.withoutProfile);
  await page.getByText("This camera has no profile").waitFor();
  await page.getByRole("button", { name: "Read once" }).click();
  const cell = page.getByLabel("0x0123", { exact: true });
  await page.waitForFunction(() => document.querySelector("[data-cell='35']").value !== "");
  const old = await cell.inputValue();
  await cell.fill("5a");
  await page.keyboard.press("Enter");
  await page.waitForFunction(() => document.querySelector("[data-cell='35']").value === "5a");
  await page.getByRole("button", { name: "Undo last write" }).click();
  await page.waitForFunction((text) => document.querySelector("[data-cell='35']").value === text, old);
});

test("registers by number are read live in every width (simulated)", { skip: !isSimulated }, async () => {
  await chooseCamera(page, names.withoutProfile);
  await page.getByText("Live", { exact: true }).click();
  const cell = (text) => page.waitForFunction((wanted) => document.querySelector("[data-cell='35']").value === wanted, text);
  for (const [device, mode, text] of [["Chip, 8 bits", null, "44"], ["Chip, 32 bits", null, "77665544"], ["I2C device", "16/16", "5544"],
                                      ["I2C device", "32/32", "77665544"]]) {
    await page.getByLabel("Device").selectOption(device);
    if (mode) await page.getByLabel("Mode").selectOption(mode);
    await control(page, "bytes", { camera: 2, address: 0x123, hex: "00000000" });
    await cell(text.replace(/./g, "0"));
    await control(page, "bytes", { camera: 2, address: 0x123, hex: "44556677" });
    await cell(text);
  }
});

test("live reading of numbers that can't be read ends with a message (simulated)", { skip: !isSimulated }, async () => {
  await chooseCamera(page, names.withoutProfile);
  await page.getByLabel("Device").selectOption("Chip, 32 bits");
  await page.getByLabel("From").fill("0xfff0");
  await page.getByText("Live", { exact: true }).click();
  await page.getByRole("alert").filter({ hasText: /Live reading has ended: reg read: .* goes beyond 0xffff/ }).waitFor();
});

test("the keyboard alone finds a register, changes and writes it", async () => {
  const tree = page.getByRole("treegrid", { name: "Registers" });
  await page.getByRole("searchbox", { name: "Search by name" }).fill(names.exposure);
  await tree.focus();
  for (const key of ["Home", "ArrowDown", "ArrowDown", "Enter"]) await page.keyboard.press(key);
  assert.equal(await page.evaluate(() => document.activeElement.closest("#register-editor") !== null), true);
  await page.keyboard.press("Control+A");
  await page.keyboard.type("0x321");
  await page.keyboard.press("Enter");
  await page.getByText("1 change not written").waitFor();
  await page.getByRole("button", { name: "Write all" }).press("Enter");
  await page.getByText("No changes wait.").waitFor();
  assert.equal(await readBack(names.exposure), 0x321);
});
