#!/usr/bin/python3
"""borvanusb workbench: a page without a browser, on virtual cameras."""
import json
import random
import signal
import threading
import time

import station
from station import camera
from workbench_client import Page

FLASH = 64 << 10


def seeded(size, seed=1):
    """Bytes that are the same each time."""
    return random.Random(seed).randbytes(size)


class WorkbenchCase(station.ToolTest):
    """A running workbench and a page."""

    CAMERAS = 1
    ARGUMENTS = ()

    def setUp(self):
        super().setUp()
        self.runs = self.folder / "runs"
        self.environment["BORVANUSB_WORKBENCH"] = station.windows_name(self.runs)
        self.cameras = [camera(number) for number in range(self.CAMERAS)]
        self.plug_in(*self.cameras)
        self.process = None
        self.page = self.open(*self.ARGUMENTS)
        self.path = self.page.state()["cameras"][0]["path"]

    def open(self, *arguments):
        """Starts a workbench and opens its page."""
        self.process = self.start("workbench", "--no-browser", *arguments)
        self.addCleanup(self.end, self.process)
        return Page(self.process.stdout.readline().decode().strip())

    @staticmethod
    def end(process):
        """Ends a workbench that a test left."""
        if process.poll() is None:
            process.kill()
        process.communicate()

    def run_command(self, *words, **more):
        """Runs a command on the first camera; it must succeed."""
        answer = self.page.run(*words, camera=self.path, **more)
        self.assertEqual(answer["exit"], 0, answer)
        return answer

    def in_background(self, *words, **more):
        """Starts a command and returns what gives its answer."""
        answers = []
        thread = threading.Thread(
            target=lambda: answers.append(self.page.run(*words, camera=self.path, **more)))
        thread.start()

        def answer():
            thread.join(station.LONGEST)
            return answers[0]
        return answer


class CommandsTest(WorkbenchCase):
    """Commands, files, state."""

    def test_state_command_and_files(self):
        state = self.page.state()
        self.assert_schema("workbench-state", state)
        self.assertEqual(state["cameras"][0]["name"], "Test camera 0")
        answer = self.run_command("reg", "read", "0x100-0x101")
        self.assert_schema("workbench-run", answer)
        self.assert_schema("reg-read", answer["result"])
        self.assertEqual([each["value"] for each in answer["result"]["registers"]], [0x11, 0x22])
        self.assertEqual(answer["line"], "borvanusb reg read 0x100-0x101 --camera 0")
        wrong = self.page.run("reg", "read", "nonsense", camera=self.path)
        self.assertEqual((wrong["exit"], wrong["error"]["kind"]), (1, "usage"))
        refused = self.page.run("run", "a.txt", status=400)
        self.assert_schema("workbench-error", refused)
        content = seeded(FLASH)
        self.put_flash(content)
        self.run_command("flash", "read", "0+64K", "all.bin")
        self.assertEqual(self.page.download("all.bin"), content)
        names = json.loads(self.page.request("GET", "/api/files")[2])
        self.assert_schema("workbench-files", names)
        self.assertEqual([each["name"] for each in names["files"]], ["all.bin"])

    def test_strangers_are_refused(self):
        self.assertEqual(self.page.request("GET", "/", Cookie="")[0], 403)
        self.assertEqual(self.page.request("GET", "/", Host="evil.example")[0], 403)
        self.assertEqual(self.page.request("POST", "/api/run", {"words": ["list"]},
                                           Origin="http://evil.example")[0], 403)
        self.assertEqual(self.page.request("GET", "/" + self.page.address.rsplit("/", 1)[1],
                                           Cookie="")[0], 403)

    def test_worker_is_no_command_of_its_own(self):
        self.refuse(1, "unknown option", "--workbench-worker", "4", "8")
        self.refuse(1, "unknown option", "--workbench-worker")

    def test_ctrl_c_ends_it_and_leaves_no_files(self):
        self.page.upload("a.bin", b"abc")
        self.process.send_signal(signal.SIGINT)
        outcome = self.finish(self.process)
        self.assertEqual(outcome.code, 0, outcome.err)
        self.assertEqual(outcome.out, "")
        self.assertEqual(list(self.runs.iterdir()), [])

    def test_two_workbenches_leave_each_other_alone(self):
        self.page.upload("a.bin", b"abc")
        first, first_process = self.page, self.process
        second = self.open()
        second.upload("b.bin", b"de")
        self.assertEqual(first.download("a.bin"), b"abc")
        self.process.send_signal(signal.SIGINT)
        self.finish(self.process)
        self.assertEqual(first.download("a.bin"), b"abc")
        first_process.send_signal(signal.SIGINT)
        self.finish(first_process)
        self.assertEqual(list(self.runs.iterdir()), [])

    def test_last_page_ends_it(self):
        self.page.listen()
        time.sleep(0.5)
        self.page.close()
        started = time.monotonic()
        self.assertEqual(self.finish(self.process).code, 0)
        self.assertGreater(time.monotonic() - started, 8)


class ReadOnlyTest(WorkbenchCase):
    """--read-only."""

    ARGUMENTS = ("--read-only",)

    def test_nothing_is_written(self):
        self.assertTrue(self.page.state()["read_only"])
        for words in (["reg", "write", "0x100", "1"], ["flash", "word", "0", "1"],
                      ["flash", "erase", "0+4K", "--yes"], ["flash", "program", "a.bin"]):
            self.assertIn("--read-only", self.page.run(*words, camera=self.path, status=400)["message"])
        self.run_command("reg", "read", "0x100")


class LiveTest(WorkbenchCase):
    """Cameras that come and go, live reading, two cameras."""

    CAMERAS = 2

    def test_cameras_that_come_and_go_are_told_within_a_second(self):
        self.page.listen()
        self.plug_in(self.cameras[0])
        started = time.monotonic()
        left = self.page.wait_for("cameras", lambda data: len(data["cameras"]) == 1)
        self.assert_schema("workbench-event-cameras", left)
        self.assertLess(time.monotonic() - started, 1.5)
        self.plug_in(*self.cameras)
        started = time.monotonic()
        self.page.wait_for("cameras", lambda data: len(data["cameras"]) == 2)
        self.assertLess(time.monotonic() - started, 1.5)

    def test_live_values_follow_a_write_and_work_goes_between(self):
        self.page.listen()
        live = self.page.post("/api/live", {"camera": self.path, "words": ["0x100"], "rate": 20})
        self.assertIsNotNone(live["live"])
        values = self.page.wait_for("values")
        self.assert_schema("workbench-event-values", values)
        self.assertEqual(values["registers"][0]["value"], 0x11)
        self.run_command("reg", "write", "0x100", "0x33")
        self.page.wait_for("values", lambda data: data["registers"][0]["value"] == 0x33)
        self.assertEqual(self.page.post("/api/live", {"camera": self.path, "words": []})["live"], None)

    def test_two_pages_read_live_each_its_own(self):
        other = self.page.another()
        for page, name in ((self.page, "a"), (other, "b")):
            page.listen(name)
        self.page.post("/api/live", {"camera": self.path, "page": "a", "reads": [
            {"words": ["reg", "read", "0x100"], "rate": 20}]})
        other.post("/api/live", {"camera": self.path, "page": "b", "reads": [
            {"words": ["reg", "read", "0x100-0x103", "--wide"], "rate": 5}, {"words": ["reg", "read", "nonsense"]}]})
        values = self.page.wait_for("values", lambda data: data["pages"] == ["b"])
        self.assert_schema("workbench-event-values", values)
        self.assertEqual(values["words"][-1], "--wide")
        self.assertEqual(len(values["registers"]), 4)
        wrong = other.wait_for("log", lambda data: data.get("ended"))
        self.assert_schema("workbench-event-log", wrong)
        self.assertEqual(wrong["pages"], ["b"])
        self.run_command("reg", "write", "0x100", "0x33")
        self.page.wait_for("values", lambda data: data["pages"] == ["a"] and data["registers"][0]["value"] == 0x33)
        other.close()
        time.sleep(1)
        while not self.page.events.empty():
            self.page.events.get()
        seen = {tuple(self.page.wait_for("values")["pages"]) for _ in range(20)}
        self.assertEqual(seen, {("a",)})

    def test_live_reading_costs_no_transfer_more_than_watching(self):
        readings = 40

        def transfers(action):
            trace = self.folder / "trace.txt"
            trace.unlink(missing_ok=True)
            self.environment["BORVAN_VIRTUAL_CAMERA_TRACE"] = station.windows_name(trace)
            done = action()
            del self.environment["BORVAN_VIRTUAL_CAMERA_TRACE"]
            return done, len(trace.read_text(encoding="utf-8").splitlines())

        def live():
            page = self.open()
            page.listen()
            page.post("/api/live", {"camera": self.path, "words": ["0x100-0x109"], "rate": 50})
            for _ in range(readings):
                page.wait_for("values")
            # Without reads it ends; the answer comes after the values of the last reading.
            page.post("/api/live", {"camera": self.path, "reads": []})
            self.process.send_signal(signal.SIGINT)
            self.finish(self.process)
            count = sum(1 for name, _ in page.seen if name == "values")
            while not page.events.empty():
                count += page.events.get()[0] == "values"
            return count

        count, of_live = transfers(live)
        _, of_watch = transfers(lambda: self.succeed("watch", "--reg", "0x100-0x109", "--rate", "50", "--count", count,
                                                     "--camera", "0"))
        each = (of_watch) / count
        # A reading may have been under way at the end.
        self.assertLessEqual(of_live, of_watch + 2 * each)


class ProgramTest(WorkbenchCase):
    """Programming: progress, stop, unplugging, kills, a transfer that hangs."""

    def setUp(self):
        super().setUp()
        self.slow = camera(0, flash={"size": "64K", "erase_ms": 120})
        self.configure(self.slow)
        self.old = seeded(FLASH)
        self.put_flash(self.old)
        self.image = seeded(40000, 5)
        self.expected = bytearray(self.old)
        self.expected[0x810:0x810 + len(self.image)] = self.image
        self.page.upload("fw.bin", self.image)
        self.words = ["flash", "program", "fw.bin", "--address", "0x810"]

    def wait_until_changing(self):
        """Waits until the flash is being changed."""
        deadline = time.monotonic() + 60
        while self.flash() == self.old:
            self.assertLess(time.monotonic(), deadline)
            time.sleep(0.02)

    def complete(self):
        """A further run completes what is there."""
        self.run_command(*self.words)
        self.assertEqual(self.flash(), bytes(self.expected))

    def test_programming_shows_progress_and_keeps_a_backup(self):
        self.page.listen()
        answer = self.run_command(*self.words, "--report", "r.json", job="p1")
        self.assert_schema("flash-program", answer["result"])
        self.assertEqual(self.flash(), bytes(self.expected))
        ended = self.page.wait_for("job", lambda data: data["state"] == "ended")
        self.assert_schema("workbench-event-job", ended)
        progress = [data for name, data in self.page.seen if name == "progress"]
        self.assertGreater(len(progress), 3)
        self.assert_schema("workbench-event-progress", progress[0])
        self.assertEqual({data["job"] for data in progress}, {"p1"})
        self.assertEqual(json.loads(self.page.download("r.json"))["result"], "done")
        names = [each["name"] for each in json.loads(self.page.request("GET", "/api/files")[2])["files"]]
        backup = next(name for name in names if "backup" in name)
        self.assertEqual(self.page.download(backup), self.old[:0xB000][:len(self.page.download(backup))])

    def test_second_command_is_told_who_is_at_work(self):
        self.slow["flash"]["erase_ms"] = 500
        self.configure(self.slow)
        answer = self.in_background(*self.words, job="long")
        self.wait_until_changing()
        time.sleep(2)
        busy = self.page.run("reg", "read", "0x100", camera=self.path, status=409)
        self.assert_schema("workbench-busy", busy)
        self.assertEqual(busy["job"]["id"], "long")
        self.assertEqual(answer()["exit"], 0)

    def test_stop_ends_at_a_safe_place(self):
        answer = self.in_background(*self.words, job="s1")
        self.wait_until_changing()
        self.page.post("/api/stop", {"job": "s1"})
        found = answer()
        self.assertIn(found["exit"], (0, 9), found)
        self.assertNotIn("run-", json.dumps([found["error"], found["messages"], found["result"]]))
        self.complete()

    def test_second_stop_ends_at_once(self):
        answer = self.in_background(*self.words, job="s1")
        self.wait_until_changing()
        self.page.post("/api/stop", {"job": "s1"})
        self.page.post("/api/stop", {"job": "s1"})
        started = time.monotonic()
        found = answer()
        self.assertLess(time.monotonic() - started, 3)
        self.assertEqual(found["exit"], 9, found)
        self.assertIn("in the middle", found["error"]["message"])
        self.complete()

    def test_browser_that_closes_in_the_middle_stops_nothing(self):
        self.page.listen()
        self.page.run(*self.words, camera=self.path, job="long", wait=False, status=202)
        self.wait_until_changing()
        self.page.close()
        again = self.page.state()
        self.assertEqual([job["id"] for job in again["jobs"]], ["long"])
        deadline = time.monotonic() + 60
        while "running" in (answer := json.loads(self.page.request("GET", "/api/jobs/long")[2])):
            self.assertLess(time.monotonic(), deadline)
            time.sleep(0.1)
        self.assertEqual(answer["exit"], 0)
        self.assertEqual(self.flash(), bytes(self.expected))

    def test_camera_that_is_unplugged_fails_and_can_be_completed(self):
        answer = self.in_background(*self.words)
        self.wait_until_changing()
        self.virtual_camera("unplug", "0")
        found = answer()
        self.assertEqual(found["exit"], 6, found)
        self.virtual_camera("plug", "0")
        self.page.state()
        time.sleep(1)
        self.complete()

    def test_killed_workbench_leaves_a_journal_for_the_next(self):
        threading.Thread(target=self.try_to_program, daemon=True).start()
        self.wait_until_changing()
        self.process.kill()
        self.process.communicate()
        # Its worker continues to a safe place.
        time.sleep(2)
        self.page = self.open()
        self.page.upload("fw.bin", self.image)
        deadline = time.monotonic() + 30
        while self.page.run(*self.words, camera=self.path)["exit"] == 4:
            self.assertLess(time.monotonic(), deadline)
            time.sleep(0.3)
        self.assertEqual(self.flash(), bytes(self.expected))
        self.process.send_signal(signal.SIGINT)
        self.finish(self.process)
        self.assertEqual(list(self.runs.iterdir()), [])

    def try_to_program(self):
        """Programs with a workbench that is killed meanwhile."""
        try:
            self.page.run(*self.words, camera=self.path)
        except (OSError, AssertionError):
            pass

    def test_transfer_that_hangs_ends_with_its_process(self):
        self.slow["faults"] = [{"selector": 1, "direction": "get", "delay_ms": 60000}]
        self.configure(self.slow)
        started = time.monotonic()
        answer = self.page.run("reg", "read", "0x100", "--timeout", "1", camera=self.path)
        self.assertLess(time.monotonic() - started, 10)
        self.assertEqual(answer["exit"], 8, answer)
        self.assertIn("unsure", answer["error"]["hint"])
        del self.slow["faults"]
        self.configure(self.slow)
        self.run_command("reg", "read", "0x100")


if __name__ == "__main__":
    station.main()
