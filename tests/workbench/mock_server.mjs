#!/usr/bin/env node
// The workbench's server with simulated cameras, to develop and test the page without the program.
//
//   mock_server.mjs [--port N] [--page FOLDER] [--read-only] [--no-cameras] [--pace MILLISECONDS]
//
// Prints the address with its token as its one line. Tests reach into it with POST /test/ACTION.
import crypto from "node:crypto";
import fs from "node:fs";
import http from "node:http";
import path from "node:path";
import { fileURLToPath } from "node:url";
import { Camera } from "./mock/camera.mjs";
import { flashCommand } from "./mock/flash_commands.mjs";
import { readLine, readWords, Refused, registerCommand } from "./mock/register_commands.mjs";
import { presets, regions } from "./mock/registers.mjs";

const here = path.dirname(fileURLToPath(import.meta.url));
const given = (name, otherwise) => (process.argv.includes(name) ? process.argv[process.argv.indexOf(name) + 1] : otherwise);
const pageFolder = given("--page", path.join(here, "../../build/workbench-page/page"));
const readOnly = process.argv.includes("--read-only");
const token = crypto.randomBytes(16).toString("hex");
let tokenUsed = false;
const cookie = crypto.randomBytes(16).toString("hex");

const profile = { file: "sample-module.camera.json", name: "Sample module" };
const cameras = process.argv.includes("--no-cameras") ? [] : [
  new Camera(0, "Front camera", "0001", profile), new Camera(1, "Rear camera", "0001", profile),
  new Camera(2, "Bench camera", "0002", null),
];
const files = new Map();
const jobs = new Map();
const answers = new Map();
const pages = new Set();
let pace = Number(given("--pace", 25));

function send(event, data) {
  for (const page of pages) page.response.write(`event: ${event}\ndata: ${JSON.stringify(data)}\n\n`);
}

const listed = () => cameras.filter((camera) => camera.plugged).map((camera) => camera.listed());
const camerasChanged = () => send("cameras", { cameras: listed() });
const find = (which) => {
  const found = cameras.find((camera) => camera.plugged && camera.path === which);
  if (!found) throw new Refused(2, "no-camera", `no camera matches ${which}`, "borvanusb list shows the cameras.");
  return found;
};

function quoted(word) {
  return /^[\w@%+=:,./-]+$/.test(word) ? word : `'${word}'`;
}

function doctor() {
  return {
    system: { program: "C:\\station\\borvanusb.exe", program_version: "0.2.0", pointer_bits: 64,
              system: "Windows 10.0.19045", code_page: "1252", library: "C:\\station\\BorvanUSB_x64.dll",
              library_version: "0.2.0", library_problem: null, library_places: [], com_problem: null, environment: {} },
    devices: [{ name: "Notebook camera", path: "", reason: "it has no vendor unit" },
              ...listed().map((camera) => ({ name: camera.name, path: camera.path, reason: null }))],
    list_problem: null,
    cameras: listed().map(({ profile: _profile, job: _job, ...camera }) => ({ camera, problem: null })),
    cause: cameras.some((camera) => camera.plugged) ? "all is well" : "the system lists no video device at all",
    advice: cameras.some((camera) => camera.plugged) ? "" : "Plug the camera in, or try another cable or port.",
  };
}

async function execute(run) {
  const [first, second] = run.words;
  if (first === "doctor") return doctor();
  if (first === "list") return { cameras: listed() };
  if (first === "profile" && second === "show") {
    return { ...profile, description: "", cameras: [], maps: [], options: [],
             flash: { size: 1 << 20, regions, image_region: "firmware" },
             presets: Object.entries(presets).map(([name, { description, settings }]) => ({ name, description, file: null,
               settings: Object.entries(settings).map(([key, value]) => `${key}=0x${value.toString(16)}`) })) };
  }
  if (first === "info") {
    return { camera: run.camera.identity(), feature_register: 0x20, fast_i2c: true,
             flash: { size: 1 << 20, how: "wraps at 1 MiB: the same words answer there again" } };
  }
  if (["reg", "i2c", "preset"].includes(first)) return registerCommand(run);
  if (first === "flash") return flashCommand(run);
  throw new Refused(1, "usage", `${first} is no command`);
}

async function startRun(body, answer) {
  const { words, camera: which } = body;
  const id = body.job ?? crypto.randomBytes(4).toString("hex");
  if (!Array.isArray(words) || ["run", "workbench", "dll"].includes(words[0])) {
    return answer(400, { error: "refused", message: `${words?.[0]} can't be run from the page` });
  }
  const changes = /^(reg|i2c) (write|load)|^preset apply|^flash (program|erase|word)/.test(words.slice(0, 2).join(" "));
  if (readOnly && changes && !words.includes("--dry-run")) {
    return answer(400, { error: "read-only", message: "the workbench was started with --read-only" });
  }
  const camera = which === null ? null : cameras.find((each) => each.path === which);
  if (camera?.job) {
    for (let waited = 0; camera.job && waited < 2000; waited += 50) await new Promise((resolve) => { setTimeout(resolve, 50); });
    if (camera.job) return answer(409, { error: "busy", job: camera.job });
  }
  const line = ["borvanusb", ...words.map(quoted), ...(camera ? ["--camera", quoted(camera.path)] : [])].join(" ");
  const job = { id, camera: which, words, line, started: new Date().toISOString(), progress: null };
  const run = {
    words, camera, files, find, pace, messages: [], exit: 0, stopped: false,
    progress(progress) {
      job.progress = progress;
      send("progress", { job: id, ...progress });
    },
  };
  jobs.set(id, { job, run });
  if (camera) camera.job = job;
  send("job", { job, state: "started", exit: null });
  if (body.wait === false) answer(202, { job: id });
  const outcome = { exit: 0, result: null, error: null, messages: run.messages, line, job: id };
  try {
    if (which !== null) find(which);
    outcome.result = await execute(run);
    outcome.exit = run.exit;
    const report = words[words.indexOf("--report") + 1];
    if (words.includes("--report")) files.set(report, Buffer.from(JSON.stringify(outcome.result)));
  } catch (error) {
    if (!(error instanceof Refused)) throw error;
    outcome.exit = error.failure.code;
    outcome.error = error.failure;
    outcome.messages.push(error.failure.message);
    if (error.report) files.set(words[words.indexOf("--report") + 1], Buffer.from(JSON.stringify(error.report)));
  }
  jobs.delete(id);
  if (camera) camera.job = null;
  answers.set(id, outcome);
  send("job", { job, state: "ended", exit: outcome.exit });
  return body.wait === false ? undefined : answer(200, outcome);
}

const lives = new Map(); // timers of a page for a camera
function endLive(key) {
  for (const timer of lives.get(key) ?? []) clearInterval(timer);
  lives.delete(key);
}

function live({ camera: which, page, reads }, answer) {
  const key = JSON.stringify([page, which]);
  endLive(key);
  const camera = cameras.find((each) => each.path === which);
  if (!camera || reads.length === 0 || ![...pages].some((each) => each.name === page)) return answer(200, { live: null });
  lives.set(key, reads.map(({ words, rate }) => {
    const timer = setInterval(() => {
      if (!camera.plugged || camera.job) return;
      try {
        const { registers } = readLine(camera, words);
        send("values", { camera: which, pages: [page], words, time: Date.now() / 1000, registers });
      } catch (error) {
        const ended = error.failure.code === 1;
        if (ended) clearInterval(timer);
        send("log", { time: new Date().toISOString(), camera: which, pages: [page], ended, text: error.message,
                      line: ["borvanusb", ...words].join(" ") });
      }
    }, 1000 / rate);
    return timer;
  }));
  return answer(200, { live: crypto.randomBytes(4).toString("hex") });
}

// The actions of tests on the simulated world.
function test(action, body, answer) {
  const camera = cameras[body.camera ?? 0];
  if (action === "unplug" || action === "plug") camera.plugged = action === "plug";
  if (action === "reset") cameras.forEach((each) => { each.plugged = true; each.reset(); });
  if (action === "pace") pace = body.pace;
  if (action === "poke") camera.values.set(body.name, body.value);
  if (action === "journals") camera.waiting = body.journals;
  if (action === "bytes") camera.chip.set(Buffer.from(body.hex, "hex"), body.address);
  if (action === "flash") Buffer.from(body.hex, "hex").copy(camera.flash, body.address);
  if (action === "flood") {
    // Sends readings like live reading, but faster than in real time.
    const { registers } = readWords(camera, body.words);
    for (let index = 0; index < body.count; index++) {
      send("values", { camera: camera.path, pages: [...pages].map((page) => page.name), words: ["reg", "read"],
                       time: body.start + index / 10, registers });
    }
  }
  if (action === "connections") for (const page of pages) page.response.destroy();
  camerasChanged();
  return answer(200, { reads: camera ? Object.fromEntries(camera.reads) : {}, values: camera ? Object.fromEntries(camera.values) : {} });
}

const types = { ".html": "text/html; charset=utf-8", ".js": "text/javascript", ".css": "text/css" };
const policy = "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self' data: blob:; connect-src 'self'; "
  + "media-src 'self' blob: mediastream:; base-uri 'none'; form-action 'none'; frame-ancestors 'none'";

async function handle(request, response) {
  const url = new URL(request.url, "http://127.0.0.1");
  const answer = (status, data) => {
    response.writeHead(status, { "Content-Type": "application/json" });
    response.end(JSON.stringify(data));
  };
  if (!tokenUsed && url.searchParams.get("token") === token) {
    tokenUsed = true;
    response.writeHead(303, { "Set-Cookie": `borvanusb=${cookie}; HttpOnly; SameSite=Strict; Path=/`, Location: "/" });
    return response.end();
  }
  if (!request.headers.cookie?.includes(cookie)) return answer(403, { error: "no cookie" });
  const chunks = [];
  for await (const chunk of request) chunks.push(chunk);
  const body = Buffer.concat(chunks);
  const json = () => JSON.parse(body.toString() || "{}");
  const route = `${request.method} ${url.pathname}`;
  if (route === "GET /api/state") {
    return answer(200, { version: "0.2.0", read_only: readOnly, library: "C:\\station\\BorvanUSB_x64.dll", cameras: listed(),
                         jobs: [...jobs.values()].map(({ job }) => job) });
  }
  if (route === "POST /api/run") return startRun(json(), answer);
  if (url.pathname.startsWith("/api/jobs/")) {
    const id = url.pathname.slice(10);
    if (jobs.has(id)) return answer(200, { running: jobs.get(id).job });
    return answers.has(id) ? answer(200, answers.get(id)) : answer(404, { error: "not-found" });
  }
  if (route === "POST /api/live") return live(json(), answer);
  if (route === "POST /api/stop") {
    const found = jobs.get(json().job);
    if (found) found.run.stopped = true;
    return answer(found ? 200 : 404, {});
  }
  if (route === "GET /api/events") {
    response.writeHead(200, { "Content-Type": "text/event-stream", "Cache-Control": "no-store" });
    const page = { response, name: url.searchParams.get("page") ?? "" };
    pages.add(page);
    request.socket.on("close", () => {
      pages.delete(page);
      if ([...pages].some((each) => each.name === page.name)) return;
      for (const key of lives.keys()) if (JSON.parse(key)[0] === page.name) endLive(key);
    });
    response.write(`event: cameras\ndata: ${JSON.stringify({ cameras: listed() })}\n\n`);
    return undefined;
  }
  if (route === "POST /api/files") {
    const name = url.searchParams.get("name");
    files.set(name, body);
    return answer(200, { name, size: body.length, sha256: crypto.createHash("sha256").update(body).digest("hex") });
  }
  if (route === "GET /api/files") {
    return answer(200, { files: [...files].map(([name, bytes]) => ({ name, size: bytes.length, sha256: "" })) });
  }
  if (request.method === "GET" && url.pathname.startsWith("/api/files/")) {
    const bytes = files.get(decodeURIComponent(url.pathname.slice(11)));
    if (!bytes) return answer(404, { error: "no such file" });
    response.writeHead(200, { "Content-Type": "application/octet-stream" });
    return response.end(bytes);
  }
  if (request.method === "POST" && url.pathname.startsWith("/test/")) return test(url.pathname.slice(6), json(), answer);
  const name = url.pathname === "/" ? "index.html" : path.basename(url.pathname);
  const file = path.join(pageFolder, name);
  if (!types[path.extname(name)] || !fs.existsSync(file)) return answer(404, { error: "not found" });
  response.writeHead(200, { "Content-Type": types[path.extname(name)], "Content-Security-Policy": policy,
                            "X-Content-Type-Options": "nosniff" });
  return response.end(fs.readFileSync(file));
}

const server = http.createServer((request, response) => {
  handle(request, response).catch((error) => {
    process.stderr.write(`${error.stack}\n`);
    if (!response.headersSent) response.writeHead(500);
    response.end();
  });
});
server.listen(Number(given("--port", 0)), "127.0.0.1", () => {
  process.stdout.write(`http://127.0.0.1:${server.address().port}/?token=${token}\n`);
});
