// A workbench that was started with --read-only.
import assert from "node:assert/strict";
import { after, before, test } from "node:test";
import { close, closePage, findRegister, go, names, newPage, noise, open } from "./world.mjs";

before(() => open(["--read-only"]));
after(() => close());

test("nothing can be written, and the page says why", async () => {
  const page = await newPage();
  await page.getByText("read-only").waitFor();
  await go(page, "Registers");
  await findRegister(page, names.exposure);
  assert.equal(await page.locator("#register-editor input").first().isDisabled(), true);
  await go(page, "Flash");
  await page.locator("[data-role=images]").setInputFiles([
    { name: `fw-0x${names.imageAddress.toString(16)}.bin`, mimeType: "a/b", buffer: noise(9000, 2) }]);
  await page.getByRole("button", { name: "Plan", exact: true }).click();
  await page.getByRole("region", { name: "Plan" }).waitFor();
  assert.equal(await page.getByRole("button", { name: /^Program \d/ }).isDisabled(), true);
  await closePage(page);
});
