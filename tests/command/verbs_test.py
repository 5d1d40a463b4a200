#!/usr/bin/python3
"""The verbs of the command line as programs use them. Usage: verbs_test.py COMMAND...

COMMAND starts the program, on Linux itself or as a Windows program under Wine; each test runs it in a folder of its own.
What needs standard input, signals or limits of this system is tested on Linux only.
"""

import email
import json
import os
import re
import resource
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import unittest
from pathlib import Path

COMMAND = []
IS_NATIVE = True

ONE = b"From ann@example.org Mon Jan  5 10:00:00 2026\nFrom: Ann <ann@example.org>\nTo: bob@example.net\n" \
      b"Date: Mon, 5 Jan 2026 10:00:00 +0000\nSubject: =?utf-8?Q?gr=C3=BC=C3=9Fe?=\nMessage-ID: <1@example.org>\n\nfirst\n\n"
TWO = b"From bob@example.net Tue Jan  6 11:00:00 2026\r\nFrom: bob@example.net\r\nSubject: raw \xfc and \x01\r\n" \
      b"Date: Tue, 6 Jan 2026 11:00:00 +0000\r\n\r\nsecond\r\n\r\n"
THREE = b"From cleo@example.com Wed Jan  7 12:00:00 2026\nFrom: cleo@example.com\nSubject: third\n" \
        b"Content-Type: multipart/mixed; boundary=\"parts\"\n\n--parts\nContent-Type: text/plain\n\nhello\n" \
        b"--parts\nContent-Type: application/zip; name=\"../a.zip\"\nContent-Transfer-Encoding: base64\n\nQUJD\n--parts--\n\n"
BOX = ONE + TWO + THREE


class Verbs(unittest.TestCase):
    def setUp(self):
        self.work = tempfile.TemporaryDirectory()
        self.addCleanup(self.work.cleanup)
        self.folder = Path(self.work.name)
        self.write("box", BOX)

    def write(self, name, content):
        (self.folder / name).write_bytes(content)

    def read(self, name):
        return (self.folder / name).read_bytes()

    def names(self):
        return sorted(path.name for path in self.folder.iterdir())

    def start(self, *arguments, **settings):
        environment = os.environ | {"LC_ALL": "C.UTF-8", "TZ": "UTC"}
        # Windows programs have a temporary folder of their own, and for each other one Wine would start a server.
        if IS_NATIVE: environment["TMPDIR"] = self.work.name
        environment.pop("COLUMNS", None)
        return subprocess.Popen([*COMMAND, *arguments], cwd=self.work.name, env=environment, stdout=subprocess.PIPE,
                                stderr=subprocess.PIPE, **settings)

    def run_bytes(self, *arguments, stdin=b"", code=0):
        process = self.start(*arguments, stdin=subprocess.PIPE)
        out, err = process.communicate(stdin, timeout=120)
        self.assertEqual(process.returncode, code, (arguments, out[-500:], err))
        self.error = err.decode().replace("\r\n", "\n")
        return out

    def run_text(self, *arguments, **settings):
        return self.run_bytes(*arguments, **settings).decode().replace("\r\n", "\n")

    def objects(self, *arguments, **settings):
        return [json.loads(line) for line in self.run_text(*arguments, "--json", **settings).splitlines()]

    def assertFails(self, code, error, *arguments):
        self.run_bytes(*arguments, code=code)
        self.assertEqual(self.error, f"vellobar: {error}\n")


class Reading(Verbs):
    def test_list_gives_one_object_a_message(self):
        first, second, third = self.objects("list", "box")
        self.assertEqual(first, {
            "message": 0, "position": 0, "size": len(ONE), "lines": 9,
            "separator": "From ann@example.org Mon Jan  5 10:00:00 2026", "from": "Ann <ann@example.org>",
            "to": "bob@example.net", "date": "Mon, 5 Jan 2026 10:00:00 +0000", "time": "2026-01-05T10:00:00Z",
            "subject": "grüße", "message_id": "<1@example.org>"})
        self.assertEqual((second["position"], second["subject"]), (len(ONE), "raw ü and \x01"))
        self.assertEqual((third["time"], third["date"]), (None, ""))

    def test_messages_are_chosen_by_numbers_and_ranges_in_the_order_of_the_mailbox(self):
        for arguments, expected in ((["1"], [1]), (["0-1"], [0, 1]), (["1-"], [1, 2]), (["2", "0"], [0, 2]),
                                    (["0,2", "2-"], [0, 2])):
            self.assertEqual([o["message"] for o in self.objects("list", "box", *arguments)], expected, arguments)

    def test_messages_are_chosen_by_their_headers(self):
        for arguments, expected in ((["--from", "BOB@"], [1]), (["--to", "bob"], [0]), (["--subject", "GRÜSSE"], []),
                                    (["--subject", "GRÜ"], [0]), (["--since", "2026-01-06"], [1]),
                                    (["--before", "2026-01-06"], [0]), (["1-", "--from", "ann"], [])):
            self.assertEqual([o["message"] for o in self.objects("list", "box", *arguments)], expected, arguments)

    def test_a_message_that_is_not_there_is_a_failure_and_a_wrong_number_is_wrong_use(self):
        self.assertFails(1, "there is no message 7: box holds 3 messages, counted from 0", "list", "box", "1-7", "--json")
        self.assertFails(2, '"x" chooses no messages: write 3, 0-9, 5- or several divided by commas',
                         "list", "box", "x", "--json")
        self.assertFails(2, '"2026-13-01" is no date: write 2024-03-31', "list", "box", "--since", "2026-13-01", "--json")

    def test_headers_gives_one_line_or_object_a_header(self):
        self.assertEqual(self.run_text("headers", "box", "0", "--name", "subject", "--name", "from"),
                         "MESSAGE  NAME\tVALUE\n      0  From\tAnn <ann@example.org>\n      0  Subject\tgrüße\n")
        self.assertEqual(self.objects("headers", "box", "1")[1],
                         {"message": 1, "header": 1, "name": "Subject", "value": "raw ü and \x01"})

    def test_show_gives_headers_text_parts_and_attachments(self):
        (shown,) = self.objects("show", "box", "2")
        self.assertEqual([h["name"] for h in shown["headers"]], ["From", "Subject", "Content-Type"])
        self.assertEqual(shown["text"], "hello\n")
        self.assertEqual([(p["part"], p["type"]) for p in shown["parts"]], [("0", "text/plain"), ("1", "application/zip")])
        self.assertEqual(shown["attachments"], [
            {"attachment": 0, "name": "../a.zip", "type": "application/zip", "encoding": "base64", "size": 3}])
        self.assertNotIn("deeper_parts", shown)

    def test_show_gives_each_part_its_place(self):
        def multipart(boundary, *parts):
            opening = b"Content-Type: multipart/mixed; boundary=" + boundary + b"\n\n"
            return opening + b"".join(b"--" + boundary + b"\n" + part for part in parts) + b"--" + boundary + b"--\n"
        leaf = b"Content-Type: text/plain\n\nleaf\n"
        self.write("tree", b"From a\n" + multipart(b"outer", multipart(b"first", leaf, leaf), leaf, multipart(b"third", leaf)))
        (shown,) = self.objects("show", "tree", "0")
        self.assertEqual([p["part"] for p in shown["parts"]], ["0", "0.0", "0.1", "1", "2", "2.0"])

    def test_show_counts_parts_that_nest_too_deep_to_be_listed(self):
        openings = b"".join(b"Content-Type: multipart/mixed; boundary=level%de\n\n--level%de\n" % (n, n) for n in range(250))
        closings = b"".join(b"--level%de--\n" % n for n in reversed(range(250)))
        self.write("deep", b"From a\n" + openings + b"Content-Type: text/plain\n\nthe heart\n" + closings)
        (shown,) = self.objects("show", "deep", "0")
        self.assertEqual([p["part"] for p in shown["parts"]], [".".join(["0"] * depth) for depth in range(1, 101)])
        self.assertEqual((shown["deeper_parts"], shown["text"]), (150, "the heart\n"))
        self.assertTrue(self.run_text("show", "deep", "0").endswith(" bytes\n  150 more, deeper than 100\n"))

    def test_attachments_gives_one_object_an_attachment(self):
        self.assertEqual(self.objects("attachments", "box"), [
            {"message": 2, "attachment": 0, "name": "../a.zip", "type": "application/zip", "encoding": "base64", "size": 3}])

    def test_json_is_valid_whatever_the_mail_holds(self):
        every_byte = bytes(range(1, 10)) + bytes(range(11, 256))
        self.write("odd", b"From " + every_byte + b"\nSubject: " + every_byte + b"\0\nX: =?utf-8?Q?=ED=A0=80=FF?=\n\n"
                   + every_byte)
        for arguments in (["list"], ["headers"], ["show", "odd", "0"], ["check"], ["stats"]):
            verb, *rest = arguments
            for line in self.run_bytes(verb, *(rest or ["odd"]), "--json", code=3 if verb == "check" else 0).splitlines():
                json.loads(line.decode("utf-8"))

    def test_stats_tells_sizes_dates_and_senders(self):
        (stats,) = self.objects("stats", "box", "--attachments")
        self.assertEqual((stats["messages"], stats["bytes"], stats["senders"]), (3, len(BOX), 3))
        self.assertEqual((stats["smallest"], stats["largest"]), (min(map(len, (ONE, TWO, THREE))), max(map(len, (ONE, TWO, THREE)))))
        self.assertEqual((stats["first"], stats["last"], stats["undated"]), ("2026-01-05T10:00:00Z", "2026-01-06T11:00:00Z", 1))
        self.assertEqual((stats["attachments"], stats["messages_with_attachments"]), (1, 1))
        self.assertEqual(stats["sizes"][0], {"up_to": 1000, "messages": 3})
        self.assertIn("messages                   3\n", self.run_text("stats", "box"))

    def test_positions_stay_right_behind_lines_of_any_length(self):
        long = b"From a@b Mon Jan  5 10:00:00 2026\nSubject: long\n\n" + b"x" * 100_000 + b"\n\n"
        self.write("long", long + ONE + TWO)
        self.assertEqual([o["position"] for o in self.objects("list", "long")], [0, len(long), len(long) + len(ONE)])


class Extracting(Verbs):
    def test_extract_makes_the_folder_and_never_overwrites(self):
        self.write("twice", THREE + THREE)
        slash = "/" if IS_NATIVE else "\\"
        self.assertEqual(self.run_text("extract", "twice", "out"), f"out{slash}a.zip\nout{slash}a (1).zip\n")
        self.assertEqual(self.run_text("extract", "twice", "out", "0"), f"out{slash}a (2).zip\n")
        for name in ("a.zip", "a (1).zip", "a (2).zip"):
            self.assertEqual(self.read(f"out/{name}"), b"ABC")
        self.assertEqual(self.names(), ["box", "out", "twice"])

    def test_extract_tells_what_it_wrote_as_objects(self):
        (made,) = self.objects("extract", "box", "out")
        self.assertEqual((made["message"], made["name"], made["bytes"]), (2, "../a.zip", 3))
        self.assertEqual(self.read(made["path"].replace("\\", "/")), b"ABC")


class Exporting(Verbs):
    def test_export_copies_bytes_as_they_stand(self):
        self.assertEqual(self.run_text("export", "box", "out", "1-"), "2 messages exported\n")
        self.assertEqual(self.read("out"), TWO + THREE)
        self.run_text("export", "box", "all")
        self.assertEqual(self.read("all"), BOX)
        self.assertEqual(self.names(), ["all", "box", "out"])

    def test_export_to_standard_output_is_the_bytes_alone(self):
        self.assertEqual(self.run_bytes("export", "box", "-", "1"), TWO)

    def test_export_replaces_nothing_unless_asked_and_never_the_mailbox(self):
        self.write("out", b"mine")
        self.assertFails(1, "cannot write out: it is there already (--replace replaces it)", "export", "box", "out")
        self.assertEqual(self.read("out"), b"mine")
        self.run_text("export", "box", "out", "0", "--replace")
        self.assertEqual(self.read("out"), ONE)
        self.assertFails(1, "box is both the mailbox and the output", "export", "box", "box", "--replace")
        self.assertEqual(self.read("box"), BOX)

    def test_export_keeps_bytes_behind_lines_of_any_length(self):
        long = b"From a@b Mon Jan  5 10:00:00 2026\nSubject: long\n\n" + b"x" * 100_000 + b"\n\n"
        self.write("long", long + TWO)
        self.assertEqual(self.run_bytes("export", "long", "-", "1"), TWO)


class Editing(Verbs):
    def test_remove_leaves_the_others_byte_for_byte(self):
        self.assertEqual(self.run_text("remove", "box", "1"), "1 message removed, 2 left\n")
        self.assertEqual(self.read("box"), ONE + THREE)
        self.assertEqual(self.run_text("remove", "box", "--subject", "nothing like it"), "0 messages removed, 2 left\n")
        self.assertEqual(self.run_text("remove", "box", "0-"), "2 messages removed, 0 left\n")
        self.assertEqual(self.read("box"), b"")
        self.assertEqual(self.names(), ["box"])

    def test_remove_and_set_want_to_be_told_which(self):
        self.assertFails(2, "say which messages to remove: a number such as 0, or 0- for all", "remove", "box")
        self.assertFails(2, "say which messages to edit: a number such as 0, or 0- for all", "set", "box", "--add", "A: b")
        self.assertEqual(self.read("box"), BOX)

    def test_set_edits_the_headers_of_the_chosen_messages_alone(self):
        self.assertEqual(self.run_text("set", "box", "1", "--set", "subject: new", "--add", "X-Tag: a", "--remove", "date"),
                         "1 message edited\n")
        edited = b"From bob@example.net Tue Jan  6 11:00:00 2026\r\nFrom: bob@example.net\r\nsubject: new\r\n" \
                 b"X-Tag: a\r\n\r\nsecond\r\n\r\n"
        self.assertEqual(self.read("box"), ONE + edited + THREE)

    def test_set_encodes_what_mail_cannot_hold(self):
        self.run_text("set", "box", "0", "--set", "Subject: Größe", "--set", "From: Jürgen <j@example.org>")
        first = self.objects("list", "box")[0]
        self.assertEqual((first["subject"], first["from"]), ("Größe", '"Jürgen" <j@example.org>'))
        self.assertTrue(self.read("box")[:len(ONE) + 60].isascii())

    def test_set_refuses_a_value_that_would_make_more_headers(self):
        self.assertFails(2, "the value of A has several lines, and a header has one", "set", "box", "0", "--set",
                         "A: b\nBcc: c")
        self.assertEqual(self.read("box"), BOX)

    def test_set_leaves_a_message_with_unreadable_headers_and_everything_else_alone(self):
        box = ONE + b"From x 10:00\nX: " + b"x" * 16384 + b"\n\nbody\n"
        self.write("box", box)
        self.assertFails(1, "message 1 has a header line of 16384 bytes or more: its headers cannot be edited",
                         "set", "box", "0-", "--set", "A: b")
        self.assertEqual(self.read("box"), box)
        self.assertEqual(self.names(), ["box"])

    def test_set_keeps_a_message_without_an_empty_line_apart_from_the_next(self):
        self.write("box", b"From x 10:00\nA: 1\nFrom y 11:00\nB: 2\n\n")
        self.run_text("set", "box", "0", "--add", "C: 3")
        self.assertEqual(self.read("box"), b"From x 10:00\nA: 1\nC: 3\nFrom y 11:00\nB: 2\n\n")


class Adding(Verbs):
    MESSAGE = b"From: Ann <ann@example.org>\nDate: Mon, 5 Jan 2026 10:00:00 +0100\nSubject: x\n\nhello\n\nFrom now on\n"
    ADDED = b"From ann@example.org Mon Jan  5 09:00:00 2026\n" + MESSAGE.replace(b"\nFrom now", b"\n>From now") + b"\n"

    def test_add_appends_a_message_file_with_a_separator_line(self):
        self.write("one.eml", self.MESSAGE)
        self.assertEqual(self.run_text("add", "box", "one.eml"), "1 message added\n")
        self.assertEqual(self.read("box"), BOX + self.ADDED)
        self.assertEqual(self.names(), ["box", "one.eml"])

    def test_add_makes_a_mailbox_that_is_missing(self):
        self.write("one.eml", self.MESSAGE)
        self.run_text("add", "new.mbox", "one.eml", "box")
        self.assertEqual(self.read("new.mbox"), self.ADDED + BOX)

    def test_add_copies_chosen_messages_of_another_mailbox_as_they_stand(self):
        self.write("other", ONE)
        self.assertEqual(self.run_text("add", "other", "box", "--messages", "1", "--messages", "2"), "2 messages added\n")
        self.assertEqual(self.read("other"), ONE + TWO + THREE)
        self.assertEqual(self.run_text("add", "other", "other", "--messages", "0"), "1 message added\n")
        self.assertEqual(self.read("other"), ONE + TWO + THREE + ONE)

    def test_add_ends_what_was_not_ended(self):
        self.write("cut", b"From x 10:00\nA: 1\n\nno end")
        self.write("crlf", b"From x 10:00\r\nA: 1\r\n\r\nno end")
        self.run_text("add", "cut", "box", "--messages", "0")
        self.assertEqual(self.read("cut"), b"From x 10:00\nA: 1\n\nno end\n\n" + ONE)
        self.run_text("add", "crlf", "box", "--messages", "1")
        self.assertEqual(self.read("crlf"), b"From x 10:00\r\nA: 1\r\n\r\nno end\r\n\r\n" + TWO)

    def test_what_was_added_reads_as_one_message(self):
        self.write("one.eml", self.MESSAGE)
        self.run_text("add", "box", "one.eml")
        self.assertEqual([o["subject"] for o in self.objects("list", "box", "3-")], ["x"])

    def test_an_empty_source_is_a_clear_failure(self):
        self.write("none", b"")
        self.assertFails(1, "cannot add none: it is empty", "add", "box", "none")
        self.assertFails(1, "cannot open mailbox missing: there is no such file", "add", "box", "missing")


class Checking(Verbs):
    def findings(self, content, code=3):
        self.write("box", content)
        return [(o["finding"], o["message"], o["position"], o["detail"]) for o in self.objects("check", "box", code=code)]

    def test_a_sound_mailbox_gives_nothing_and_exit_code_0(self):
        self.assertEqual(self.findings(BOX, code=0), [])

    def test_a_line_of_text_that_begins_with_from_is_doubtful(self):
        text = b"From now on we meet.\n"
        self.assertEqual(self.findings(ONE + text + THREE),
                         [("doubtful-separator-line", 1, len(ONE), "From now on we meet.")])

    def test_a_separator_line_with_a_date_but_text_behind_it_is_doubtful(self):
        self.assertEqual(self.findings(ONE + b"From 5 to 6: 10:30\nwe meet\n\n" + TWO)[0][:3],
                         ("doubtful-separator-line", 1, len(ONE)))

    def test_a_missing_closing_line_is_told_with_the_place_and_the_line_to_insert(self):
        cut = THREE.replace(b"--parts--\n", b"")
        self.assertEqual(self.findings(cut + ONE), [("missing-closing-delimiter", 0, len(cut), "--parts--")])
        self.write("box", cut[:] + b"--parts--\n" + ONE)
        self.assertEqual(self.objects("check", "box"), [])

    def test_a_missing_closing_line_of_an_inner_multipart_is_told(self):
        inner = b"From a 10:00\nContent-Type: multipart/mixed; boundary=outer\n\n--outer\nContent-Type: multipart/alternative; " \
                b"boundary=inner\n\n--inner\n\nx\n"
        self.assertEqual(self.findings(inner + b"--outer--\n"), [("missing-closing-delimiter", 0, len(inner), "--inner--")])

    def test_header_blocks_that_cannot_be_read_are_told(self):
        start = b"From a 10:00\n"
        self.assertEqual(self.findings(start + b"A: 1\nB: " + b"x" * 16384 + b"\n\n"),
                         [("long-header-line", 0, len(start) + 5, "B: " + "x" * 37)])
        self.assertIn(("headers-begin-with-blank", 0, len(start), ""), self.findings(start + b" x\nA: 1\n\n"))
        self.assertEqual(self.findings(start + b"A: 1\n" + ONE), [("headers-without-end", 0, len(start) + 5, "")])

    def test_lines_that_the_component_counts_twice_are_told(self):
        start = b"From a 10:00\nA: 1\n\n"
        self.assertEqual(self.findings(start + b"x" * 60_000 + b"\n\n" + ONE), [("long-line", 0, len(start), "")])

    def test_other_damage_is_told(self):
        self.assertEqual(self.findings(b"what is this\n\n" + ONE), [("text-before-first-message", 0, 0, "")])
        self.assertEqual(self.findings(b"From a 10:00\rA: 1\r\rx\r")[0], ("no-line-feeds", 0, 0, ""))
        short = b"From a 10:00\nContent-Type: multipart/mixed; boundary=abc\n\n--abc\n\nx\n--abc--\n"
        self.assertEqual(self.findings(short), [("short-boundary", 0, 0, "--abc")])
        unused = b"From a 10:00\nContent-Type: multipart/mixed; boundary=abcd\n\ntext\n"
        self.assertEqual(self.findings(unused), [("boundary-without-parts", 0, 0, "--abcd")])

    def test_people_read_the_same(self):
        self.write("box", b"what is this\n\n" + ONE)
        self.assertRegex(self.run_text("check", "box", code=3),
                         r"\AMESSAGE +POSITION  FINDING\tDETAIL\tMEANING\tADVICE\n"
                         r"      0            0  text-before-first-message\t\tThe file does not begin[^\t]*\t[^\t]*\n\Z")


class Wrong(Verbs):
    def test_a_wrong_verb_brings_the_nearest_one(self):
        self.assertFails(2, "there is no verb lsit; did you mean list? (vellobar --help lists them)", "lsit", "box")
        self.assertFails(2, "there is no verb frobnicate (vellobar --help lists them)", "frobnicate")

    def test_a_wrong_option_brings_the_nearest_one(self):
        self.assertFails(2, "there is no option --jsno; did you mean --json? (vellobar list --help lists them)",
                         "list", "box", "--jsno")
        self.assertFails(2, "there is no option --bas64; did you mean --base64? (vellobar encode --help lists them)",
                         "encode", "--bas64", "a", "b")

    def test_what_is_missing_is_one_line(self):
        self.assertFails(2, "FILE is required (see vellobar list --help)", "list")
        self.assertFails(2, "a verb is missing (see vellobar --help)")

    def test_standard_input_cannot_be_edited(self):
        self.assertFails(2, "standard input cannot be edited in its place", "remove", "-", "0")
        self.assertFails(2, "standard input cannot be edited in its place", "set", "-", "0", "--add", "A: b")


class Companions(Verbs):
    """What comes with the program: completion and the man page."""

    SCRIPT = Path(__file__).resolve().parents[2] / "command/completion/vellobar.bash"
    VERBS = ["list", "show", "headers", "attachments", "extract", "export", "add", "remove", "set", "check", "stats", "new",
             "encode", "decode", "completion"]

    def setUp(self):
        super().setUp()
        if not IS_NATIVE:
            self.skipTest("made for this system")

    def completed(self, *words):
        line = " ".join(f"'{word}'" for word in words)
        script = f"source {self.SCRIPT}; COMP_WORDS=({line}); COMP_CWORD={len(words) - 1}; _vellobar; " \
                 'printf "%s\\n" "${COMPREPLY[@]}"'
        return subprocess.run(["bash", "-euc", script], capture_output=True, check=True, text=True).stdout.split()

    def test_the_script_for_bash_is_the_programs_own(self):
        self.assertEqual(self.run_text("completion", "bash"), self.SCRIPT.read_text())

    def test_verbs_and_options_complete(self):
        self.assertEqual(self.completed("vellobar", "ex"), ["extract", "export"])
        self.assertEqual(self.completed("vellobar", "list", "--j"), ["--json"])
        self.assertEqual(self.completed("vellobar", "encode", "--b"), ["--base64", "--binhex"])
        self.assertEqual(self.completed("vellobar", "list", "in"), [])
        self.assertEqual([v for v in self.completed("vellobar", "") if not v.startswith("-")], self.VERBS)

    def test_the_man_page_names_every_verb_and_option(self):
        page = self.run_text("man-page").replace("\\-", "-")
        for verb in self.VERBS:
            self.assertIn(f".SS vellobar {verb} ", page)
            section = page.split(f".SS vellobar {verb} ")[1].split("\n.S")[0]
            for option in re.findall(r"^ +(?:-h,)?(--[a-z0-9-]+)", self.run_text(verb, "--help"), re.M):
                if option != "--help":
                    self.assertIn(f"\\fB{option}\\fR", section, verb)

    @unittest.skipUnless(shutil.which("groff"), "no groff here")
    def test_the_man_page_is_sound(self):
        done = subprocess.run(["groff", "-man", "-Tutf8", "-ww", "-z"], input=self.run_bytes("man-page"), capture_output=True)
        self.assertEqual((done.returncode, done.stderr), (0, b""))


class StandardStreams(Verbs):
    def setUp(self):
        super().setUp()
        if not IS_NATIVE:
            self.skipTest("Windows programs get no standard input here")

    def test_a_mailbox_comes_from_standard_input(self):
        self.assertEqual([o["subject"] for o in self.objects("list", "-", stdin=BOX)], ["grüße", "raw ü and \x01", "third"])
        self.assertEqual(self.run_bytes("export", "-", "-", "1", stdin=BOX), TWO)
        self.run_text("add", "box", "-", stdin=ONE)
        self.assertEqual(self.read("box"), BOX + ONE)
        self.assertEqual(self.names(), ["box"])

    def test_new_writes_to_standard_output(self):
        message = email.message_from_bytes(self.run_bytes("new", "-", "--from", "a@b.example", "--subject", "x", "--text", "hi"))
        self.assertEqual((message["From"], message["Subject"]), ('"a@b.example" <a@b.example>', "x"))

    def test_coding_goes_from_standard_input_to_standard_output(self):
        every_byte = bytes(range(256))
        for encoding in ("--base64", "--qp", "--uu", "--binhex"):
            coded = self.run_bytes("encode", encoding, "-", "-", stdin=every_byte)
            back = self.run_bytes("decode", encoding, "-", "-", stdin=coded)
            self.assertEqual(back[:256], every_byte, encoding)
        self.assertEqual(self.names(), ["box"])

    def test_output_that_cannot_be_written_is_a_failure(self):
        with open("/dev/full", "wb") as full:
            for arguments in (["list", "box"], ["list", "box", "--json"], ["export", "box", "-"],
                              ["encode", "--base64", "box", "-"]):
                done = subprocess.run([*COMMAND, *arguments], cwd=self.work.name, stdout=full, stderr=subprocess.PIPE)
                self.assertEqual((done.returncode, done.stderr), (1, b"vellobar: cannot write the output\n"), arguments)


class Interrupted(Verbs):
    def setUp(self):
        super().setUp()
        if not IS_NATIVE:
            self.skipTest("signals of this system")

    def interrupt_while_it_reads(self, number, *arguments):
        """Starts the program with an open pipe as its input, and interrupts it when it has taken something out of it."""
        process = self.start(*arguments, stdin=subprocess.PIPE, preexec_fn=lambda: signal.signal(number, signal.SIG_DFL))
        process.stdin.write(ONE)
        process.stdin.flush()
        deadline = time.monotonic() + 60
        while not any(path.name.startswith("VLB") for path in self.folder.iterdir()):
            self.assertLess(time.monotonic(), deadline, "the program keeps what it reads")
            self.assertIsNone(process.poll())
        process.send_signal(number)
        process.wait(timeout=60)
        out, err = process.stdout.read(), process.stderr.read()
        for stream in (process.stdin, process.stdout, process.stderr):
            stream.close()
        self.assertEqual((out, err), (b"", b""))
        return process.returncode

    def test_an_interrupted_program_ends_by_the_signal_and_leaves_nothing(self):
        for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
            for arguments in (["add", "box", "-"], ["encode", "--base64", "-", "out"], ["list", "-"]):
                self.assertEqual(self.interrupt_while_it_reads(number, *arguments), -number, arguments)
                self.assertEqual((self.names(), self.read("box")), (["box"], BOX), arguments)

    def limited(self, *arguments):
        """Runs the program where no file may become larger than 64 KB, as on a full disk."""
        def limit():
            signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
            resource.setrlimit(resource.RLIMIT_FSIZE, (65536, 65536))
        process = self.start(*arguments, stdin=subprocess.DEVNULL, preexec_fn=limit)
        out, err = process.communicate(timeout=60)
        return process.returncode, err.decode()

    def test_a_file_that_cannot_be_written_whole_is_not_left_in_part(self):
        large = THREE.replace(b"QUJD\n", b"QUJD\n" * 100_000)
        self.write("large", ONE + large)
        before = self.names()
        for arguments, error in (
                (["export", "large", "out"], "cannot write out"),
                (["encode", "--uu", "large", "out"], "cannot write out"),
                (["add", "box", "large"], "cannot write box"),
                (["set", "large", "0", "--add", "A: b"], "cannot write large"),
                (["remove", "large", "0"], "cannot write large")):
            self.assertEqual(self.limited(*arguments), (1, f"vellobar: {error}\n"), arguments)
            self.assertEqual((self.names(), self.read("box"), self.read("large")), (before, BOX, ONE + large), arguments)

    def test_an_attachment_that_cannot_be_written_does_not_keep_the_others(self):
        large = THREE.replace(b"QUJD\n", b"QUJD\n" * 100_000)
        self.write("large", large + THREE)
        self.assertEqual(self.limited("extract", "large", "out"),
                         (1, "vellobar: cannot write out/a.zip\nvellobar: 1 attachment was not extracted\n"))
        self.assertEqual([(p.name, p.read_bytes()) for p in (self.folder / "out").iterdir()], [("a.zip", b"ABC")])


if __name__ == "__main__":
    COMMAND = [str(Path(word).resolve()) if os.path.exists(word) else word for word in sys.argv[1:]]
    IS_NATIVE = len(COMMAND) == 1
    sys.argv[1:] = []
    unittest.main()
