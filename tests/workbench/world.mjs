// The world that the browser tests work in: a server with cameras, and a browser.
//
// WORKBENCH_PROGRAM  folder with borvanusb.exe and virtual-camera.exe; without it the simulated server is started.
//                    run.sh --program sets it, and WORKBENCH_STATION: the folder that station.mjs wrote
// WORKBENCH_PATIENCE milliseconds after which a test that waits fails, 45,000 by default
// WORKBENCH_SHOTS    folder for screenshots, by default build/workbench-page/screenshots
import assert from "node:assert/strict";
import { execFileSync, spawn } from "node:child_process";
import fs from "node:fs";
import { createRequire } from "node:module";
import path from "node:path";
import { fileURLToPath } from "node:url";
import { writeContent } from "./station.mjs";

const here = path.dirname(fileURLToPath(import.meta.url));
const room = path.resolve(here, "../../build/workbench-page");
const require = createRequire(path.join(room, "node_modules", "x.js"));
const { chromium } = require("playwright-core");
const axeSource = fs.readFileSync(require.resolve("axe-core/axe.min.js"), "utf8");
export const shots = process.env.WORKBENCH_SHOTS ?? path.join(room, "screenshots");
const programs = process.env.WORKBENCH_PROGRAM;
const station = process.env.WORKBENCH_STATION;
export const isSimulated = !programs;
const wine = path.resolve(here, "../../scripts/run_with_wine.sh");

// The cameras and registers that the tests use.
export const names = {
  camera: "Front camera", other: "Rear camera", withoutProfile: "Bench camera",
  exposure: "EXPOSURE.EXPOSURE", exposureReset: "0x000200", measured: "EXPOSURE.MEAN",
  enumerated: "SENSOR.TEST_PATTERN", enumeratedField: "PATTERN", enumeratedValue: "bars", oneBitField: "ROLL",
  slider: "LED.CONTROL", sliderField: "BRIGHTNESS", readOnly: "SYSTEM.ID", clearedByReading: "STATUS.FLAGS",
  preset: "indoor", region: "firmware", readOnlyRegion: "boot", imageAddress: 0x10000,
};

let server = null;
let browser = null;
let address = "";
let cookies = null; // the token works once

// Returns the address with its token.
export async function startServer(options = []) {
  server = isSimulated
    ? spawn(process.execPath, [path.join(here, "mock_server.mjs"), ...options], { stdio: ["ignore", "pipe", "inherit"] })
    : spawn(wine, [path.join(programs, "borvanusb.exe"), "workbench", "--no-browser", "--stay", ...options],
            { stdio: ["ignore", "pipe", "inherit"] });
  cookies = null;
  address = await new Promise((resolve, reject) => {
    server.stdout.once("data", (data) => resolve(String(data).trim()));
    server.once("exit", () => reject(new Error("the server ended")));
  });
  return address;
}

export async function stopServer() {
  // The program removes its folder and ends its workers.
  const ended = new Promise((resolve) => { server.once("exit", resolve); });
  server.kill("SIGINT");
  await ended;
}

export async function startBrowser() {
  browser = await chromium.launch({
    executablePath: process.env.WORKBENCH_BROWSER ?? "/usr/bin/chromium",
    args: ["--no-sandbox", "--use-fake-device-for-media-stream", "--use-fake-ui-for-media-stream"],
  });
}

export async function open(options = []) {
  await startServer(options);
  await startBrowser();
}

export const stopBrowser = () => browser?.close();

export async function close() {
  await stopBrowser();
  await stopServer();
}

// A window of the browser without a page in it.
export async function blankPage() {
  return (await browser.newContext()).newPage();
}

// Opens a page that fails the test if the browser reports an error: a script error, a blocked
// style, a missing file.
export async function newPage(options = {}) {
  const context = await browser.newContext({
    viewport: { width: 1440, height: 900 }, colorScheme: "light", acceptDownloads: true,
    permissions: ["clipboard-read", "clipboard-write"], ...options,
  });
  const page = await context.newPage();
  page.setDefaultTimeout(Number(process.env.WORKBENCH_PATIENCE ?? 45_000));
  page.complaints = [];
  page.on("pageerror", (error) => page.complaints.push(error.message));
  page.on("console", (message) => {
    if (message.type() === "error" && !/ERR_(CONNECTION|INCOMPLETE|EMPTY|NETWORK)|40[049]/.test(message.text())) page.complaints.push(message.text());
  });
  page.outside = [];
  page.on("request", (request) => {
    const url = new URL(request.url());
    if (["http:", "https:"].includes(url.protocol) && url.origin !== new URL(address).origin) page.outside.push(request.url());
  });
  if (cookies) await context.addCookies(cookies);
  await page.goto(cookies ? address.replace(/\?.*/, "") : address);
  cookies ??= await context.cookies();
  await page.locator("h1").waitFor();
  return page;
}

export async function closePage(page) {
  assert.deepEqual(page.complaints, [], "the browser complains");
  assert.deepEqual(page.outside, [], "a request left the machine");
  await page.context().close();
}

export async function go(page, title) {
  await page.getByRole("navigation", { name: "Views" }).getByRole("link", { name: title, exact: true }).click();
  await page.getByRole("heading", { level: 1 }).waitFor();
}

export async function chooseCamera(page, name) {
  const choice = page.getByRole("banner").getByRole("combobox");
  await choice.selectOption(await choice.locator("option").filter({ hasText: name }).first().getAttribute("value"));
}

export function run(program, ...words) {
  return execFileSync(wine, [path.join(programs, program), ...words], { encoding: "utf8" });
}

// What the tests do to cameras, done to virtual ones. They program as fast as they can, so `pace` does nothing.
const unplugged = new Set();
const onVirtualCameras = {
  plug({ camera }) {
    run("virtual-camera.exe", "plug", String(camera));
    unplugged.delete(camera);
  },
  unplug({ camera }) {
    unplugged.add(camera);
    run("virtual-camera.exe", "unplug", String(camera));
  },
  poke: ({ camera = 0, name, value }) => run("borvanusb.exe", "reg", "write", `${name}=${value}`, "--camera", String(camera)),
  reset() {
    for (const camera of unplugged) onVirtualCameras.plug({ camera });
    run("virtual-camera.exe", "power-cycle");
    writeContent(station);
    // Journals of programming that a test interrupted.
    fs.rmSync(process.env.WORKBENCH_JOURNALS, { recursive: true, force: true });
  },
  pace: () => {},
};

// Changes the cameras themselves. Returns the state of the simulated ones.
export async function control(page, action, body = {}) {
  if (!isSimulated) return onVirtualCameras[action](body);
  return page.evaluate(async ([name, text]) => (await fetch(`/test/${name}`, { method: "POST", body: text })).json(),
                       [action, JSON.stringify(body)]);
}

// Searches for a register, selects it and waits until its value was read. `isRead` is false for
// registers that are read only on request.
export async function findRegister(page, name, isRead = true) {
  await page.getByRole("searchbox", { name: "Search by name" }).fill(name);
  const row = page.getByRole("row").filter({ has: page.locator("code", { hasText: new RegExp(`^${name.split(".").at(-1)}$`) }) }).first();
  await row.click();
  await page.getByRole("heading", { name, exact: true }).waitFor();
  if (isRead) await page.waitForFunction(() => document.querySelector("#register-editor input").value !== "");
  return row;
}

export async function download(page, click) {
  const [file] = await Promise.all([page.waitForEvent("download"), click()]);
  return { name: file.suggestedFilename(), bytes: fs.readFileSync(await file.path()) };
}

export async function findings(page) {
  await page.evaluate(axeSource);
  const { violations } = await page.evaluate(() => axe.run(document, {
    runOnly: ["wcag2a", "wcag2aa", "wcag21a", "wcag21aa", "best-practice"],
  }));
  return violations.map((each) => `${each.id}: ${each.help}: ${each.nodes.map((node) => node.target.join(" ")).join("; ")}`);
}

export async function shoot(page, name) {
  fs.mkdirSync(shots, { recursive: true });
  await page.screenshot({ path: path.join(shots, `${name}.png`) });
}

// A small Intel HEX file.
export function intelHex(base, bytes) {
  const lines = [];
  const record = (offset, kind, data) => {
    const line = Buffer.concat([Buffer.from([data.length, offset >> 8, offset & 255, kind]), data]);
    const sum = line.reduce((total, byte) => total + byte, 0);
    lines.push(":" + Buffer.concat([line, Buffer.from([-sum & 255])]).toString("hex").toUpperCase());
  };
  for (let at = 0; at < bytes.length; at += 16) {
    if ((base + at) % 65536 === 0 || at === 0) record(0, 4, Buffer.from([(base + at) >> 24, ((base + at) >> 16) & 255]));
    record((base + at) & 0xffff, 0, bytes.subarray(at, at + 16));
  }
  lines.push(":00000001FF");
  return Buffer.from(lines.join("\n") + "\n");
}

export function noise(size, seed) {
  return Buffer.from(Array.from({ length: size }, (_, at) => (Math.imul(at + seed, 2654435761) >>> 13) & 255));
}
