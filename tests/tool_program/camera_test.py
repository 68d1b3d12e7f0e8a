#!/usr/bin/python3
"""Finding and looking at cameras: list, info, doctor, and every way to choose the wrong one."""
import json
import os
import signal
import subprocess
import time

import station
from station import camera


class ListTest(station.ToolTest):
    """borvanusb list."""

    def test_guide_shows_the_cameras_of_its_configuration(self):
        shipped = station.ROOT / "virtual_camera/configurations/guide.json"
        self.plug_in(*json.loads(shipped.read_text(encoding="utf-8"))["cameras"])
        guide = (station.ROOT / "docs/tool.md").read_text(encoding="utf-8")
        shown = guide.split("```console\n$ borvanusb list\n", 1)[1].split("```", 1)[0]
        self.assertEqual(3, len(shown.splitlines()))
        self.assertEqual(shown, self.succeed("list").out)

    def test_shows_each_camera_with_index_ids_name_and_path(self):
        self.plug_in(camera(0), camera(1))
        text = self.succeed("list").out
        self.assertIn("Test camera 0", text)
        self.assertIn("1234:0001", text)
        self.assertIn("\\\\?\\usb#vid_1234&pid_0001&mi_00#1", text)

    def test_camera_is_no_option_of_it(self):
        self.refuse(1, "--camera: does not apply to list", "list", "--camera", "9")

    def test_json_follows_its_schema(self):
        self.plug_in(camera(0), camera(1))
        result = self.succeed("list", "--json").json
        self.assert_schema("list", result)
        self.assertEqual(result["cameras"][1], {
            "index": 1, "path": "\\\\?\\usb#vid_1234&pid_0001&mi_00#1", "name": "Test camera 1",
            "vid": "1234", "pid": "0001"})

    def test_no_camera_is_said(self):
        self.plug_in()
        self.assertEqual(self.succeed("list", "--json").json, {"cameras": []})
        self.assertIn("doctor", self.succeed("list").err)

    def test_name_is_shown_and_found_as_windows_has_it(self):
        # The library's texts are 8-bit: what the code page lacks is a question mark there.
        names = ["Prüfkamera", "Prüfkamera №", "前置摄像头", "Kamera?"]
        self.plug_in(*(camera(number, name=name) for number, name in enumerate(names)))
        listed = self.succeed("list", "--json").json["cameras"]
        self.assertEqual([one["name"] for one in listed], names)
        for name in names[1:]:
            chosen = self.succeed("info", "--json", "--camera", name).json["camera"]
            self.assertEqual(chosen["name"], name)
        self.assertIn("  前置摄像头\n", self.succeed("info", "--camera", "2").out)
        self.assertIn("2  1234:0002  前置摄像头", self.succeed("doctor").out)

    def test_watch_tells_of_arrivals_and_departures(self):
        self.plug_in(camera(0), camera(1))
        process = self.start("list", "--watch", "--json")
        time.sleep(1.5)
        self.virtual_camera("unplug", "1")
        time.sleep(2.5)
        self.virtual_camera("plug", "1")
        time.sleep(2.5)
        process.send_signal(signal.SIGINT)
        outcome = self.finish(process)
        self.assertEqual(outcome.code, 0, outcome.err)
        for line in outcome.lines:
            self.assert_schema("list-watch", line)
        events = [(line["event"], line["camera"]["name"]) for line in outcome.lines]
        self.assertEqual(events[-2:], [("left", "Test camera 1"), ("arrived", "Test camera 1")])


class ChoiceTest(station.ToolTest):
    """--camera and BORVANUSB_CAMERA."""

    def setUp(self):
        super().setUp()
        self.plug_in(camera(0), camera(1, name="Left camera"), camera(2, name="Right camera"))

    def chosen(self, *arguments, environment=None):
        """The name of the camera that info looks at."""
        return self.succeed("info", "--json", *arguments, environment=environment).json["camera"][
            "name"]

    def test_index_path_ids_and_name_all_serve(self):
        self.assertEqual(self.chosen("--camera", "1"), "Left camera")
        self.assertEqual(self.chosen("--camera", "\\\\?\\USB#VID_1234&PID_0002&MI_00#2"),
                         "Right camera")
        self.assertEqual(self.chosen("--camera", "1234:0002"), "Right camera")
        self.assertEqual(self.chosen("--camera", "left"), "Left camera")
        self.assertEqual(self.chosen("--camera", "pid_0000"), "Test camera 0")

    def test_environment_chooses_and_the_option_wins(self):
        environment = {"BORVANUSB_CAMERA": "left"}
        self.assertEqual(self.chosen(environment=environment), "Left camera")
        self.assertEqual(self.chosen("--camera", "2", environment=environment), "Right camera")

    def test_several_matches_are_refused_and_listed(self):
        for arguments in ([], ["--camera", "camera"]):
            outcome = self.refuse(3, "3 cameras", "info", *arguments)
            self.assertIn("Left camera", outcome.err)
            self.assertIn("Right camera", outcome.err)

    def test_no_match_is_no_camera(self):
        self.refuse(2, "no camera 7", "info", "--camera", "7")
        self.refuse(2, "no camera has", "info", "--camera", "elsewhere")
        # "L" stands in one name alone, ":0002" in the IDs of one camera.
        self.refuse(2, "needs at least 3 characters", "info", "--camera", "L")
        self.refuse(2, "needs four hexadecimal digits", "info", "--camera", ":0002")
        self.plug_in()
        self.refuse(2, "no USB camera", "info")

    def test_failure_is_json_too(self):
        outcome = self.refuse(3, "cameras", "info", "--json")
        self.assert_schema("error", outcome.json)
        self.assertEqual(outcome.json["error"]["code"], 3)
        self.assertEqual(outcome.json["error"]["kind"], "several-cameras")


class InfoTest(station.ToolTest):
    """borvanusb info."""

    def test_tells_identity_features_and_the_flash_size(self):
        self.plug_in(camera(0, flash={"size": "256K"}))
        self.put_flash(bytes(range(256)) * 1024)
        result = self.succeed("info", "--json").json
        self.assert_schema("info", result)
        self.assertEqual(result["camera"]["vid"], "1234")
        self.assertEqual(result["feature_register"], 0x20)
        text = self.succeed("info").out
        self.assertIn("1234:0000", text)
        self.assertIn("0x20", text)

    def test_wrapping_and_ending_flashes_show_their_size(self):
        content = os.urandom(256 << 10)
        for behaviour in ("wrap", "fail"):
            self.plug_in(camera(0, flash={"size": "256K", "beyond_end": behaviour}))
            self.put_flash(content)
            result = self.succeed("info", "--json").json
            self.assertEqual(result["flash"]["size"], 256 << 10, behaviour)

    def test_blank_flash_hides_its_size(self):
        self.plug_in(camera(0))
        result = self.succeed("info", "--json").json
        self.assertIsNone(result["flash"]["size"])
        self.assertIn("--flash-size", self.succeed("info").out)
        self.assertEqual(self.succeed("info", "--json", "--flash-size", "64K").json["flash"]["size"],
                         65536)

    def test_camera_without_vendor_unit_is_refused(self):
        self.plug_in(camera(0, nodes=["camera-terminal", "processing"]))
        self.refuse(4, "no vendor unit", "info")

    def test_camera_that_cannot_be_bound_is_refused_with_the_librarys_reason(self):
        self.plug_in(camera(0))
        self.configure(camera(1))  # the list still has the one that is no longer there
        outcome = self.refuse(4, "can't be opened: ERROR: ", "info", "--json")
        self.assertEqual(outcome.json["error"]["kind"], "refused")
        text = self.run_tool("doctor").out
        self.assertIn("can't be opened", text)

    def test_camera_whose_chip_refuses_everything_is_refused(self):
        self.plug_in(camera(0, faults=[{"result": "0x80070017"}]))
        self.refuse(4, "no vendor unit that answers", "info")

    def test_hanging_camera_ends_the_command(self):
        self.plug_in(camera(0, faults=[{"selector": 1, "direction": "get", "delay_ms": 30000}]))
        started = time.monotonic()
        outcome = self.refuse(8, "does not answer", "info", "--timeout", "0.5", "--json")
        self.assertLess(time.monotonic() - started, 15)
        self.assertEqual(outcome.json["error"]["kind"], "timeout")

    def test_verbose_tells_library_camera_and_calls(self):
        self.plug_in(camera(0))
        outcome = self.succeed("info", "--verbose")
        self.assertRegex(outcome.err, r"(?m)^library  Z:\\.*\\BorvanUSB_x64\.dll, version [0-9.]+$")
        self.assertIn("camera   0  1234:0000  Test camera 0  \\\\?\\usb#vid_1234&pid_0000&mi_00#0\n",
                      outcome.err)
        self.assertRegex(outcome.err, r"(?m)^calls    listing the cameras 2, opening the camera 1, "
                                      r"reading a register 4, ")
        self.assertEqual(self.succeed("info").err, "")
        name = self.file("list.txt", "0xfffd, 0,\n0x100, 1,\n")
        self.assertEqual(self.succeed("reg", "load", name, "--check-only", "--verbose").err,
                         "library  not used\n")

    def test_trace_holds_this_processs_transfers(self):
        self.plug_in(camera(0))
        self.succeed("info", "--trace", self.name("trace.jsonl"))
        trace = (self.folder / "trace.jsonl").read_text(encoding="utf-8")
        self.assertIn('"selector":1', trace)


class LostOutputTest(station.ToolTest):
    """Standard output that can't be written."""

    def setUp(self):
        super().setUp()
        self.plug_in(camera(0))

    def write_to(self, output, *arguments):
        """Runs borvanusb with `output` as its standard output; its exit code and standard error."""
        process = subprocess.run([*self.command(), *arguments], env=self.environment, check=False,
                                 stdin=subprocess.DEVNULL, stdout=output, stderr=subprocess.PIPE,
                                 timeout=station.LONGEST)
        return process.returncode, process.stderr.decode("utf-8").replace("\r\n", "\n")

    def test_full_disk_is_a_failure_of_the_file(self):
        for arguments in (["list"], ["info", "--json"], ["reg", "dump", "0-0xff"], ["--help"],
                          ["watch", "--reg", "0x100"]):
            with open("/dev/full", "wb") as full:
                code, error = self.write_to(full, *arguments)
            self.assertEqual(code, 5, f"{arguments}\n{error}")
            self.assertRegex(error, "(?m)^borvanusb: standard output can't be written: ")

    def test_full_disk_does_not_hide_another_failure(self):
        with open("/dev/full", "wb") as full:
            code, error = self.write_to(full, "info", "--json", "--camera", "7")
        self.assertEqual(code, 2, error)
        self.assertIn("no camera 7", error)
        self.assertIn("standard output can't be written", error)

    def test_reader_that_is_gone_ends_watching_without_a_word(self):
        process = self.start("watch", "--reg", "0x100", "--quiet")
        self.assertIn(b"0x0100", process.stdout.readline())
        process.stdout.close()
        # Only a change is written, and so noticed.
        self.succeed("reg", "write", "0x100", "0x12")
        error = process.stderr.read()
        self.assertEqual((process.wait(timeout=station.LONGEST), error), (5, b""))
        process.stderr.close()


class DoctorTest(station.ToolTest):
    """borvanusb doctor."""

    def test_healthy_machine_is_described(self):
        self.plug_in(camera(0))
        text = self.succeed("doctor").out
        for words in ("64", "BorvanUSB_x64.dll", "Test camera 0", "Wine"):
            self.assertIn(words, text)
        self.assert_schema("doctor", self.succeed("doctor", "--json").json)

    def test_reason_for_each_device_that_is_not_listed(self):
        self.plug_in(camera(0), camera(1, path="\\\\?\\pci#ven_8086#1", name="Built-in camera"))
        text = self.succeed("doctor").out
        self.assertIn("usb#", text)
        self.assertIn("Built-in camera", text)

    def test_missing_and_wrong_library_are_named(self):
        self.plug_in(camera(0))
        missing = {"BORVANUSB_DLL": self.name("nowhere.dll")}
        wrong = {"BORVANUSB_DLL": self.file("text.dll", "no library")}
        for environment in (missing, wrong):
            outcome = self.run_tool("doctor", environment=environment)
            self.assertNotEqual(outcome.code, 0)
            self.assertIn(environment["BORVANUSB_DLL"], outcome.out)
        self.refuse(10, "is not found", "list", environment=missing)
        self.refuse(10, "can't be loaded", "list", environment=wrong)

    def test_library_is_never_taken_from_the_current_folder(self):
        self.plug_in(camera(0))
        self.file("BorvanUSB_x64.dll", "no library")
        process = subprocess.run([*self.command(), "list"], env=self.environment, cwd=self.folder,
                                 check=False, capture_output=True, stdin=subprocess.DEVNULL,
                                 timeout=station.LONGEST)
        self.assertEqual(process.returncode, 0, process.stderr)


if __name__ == "__main__":
    station.main()
