"""Runs the examples of one host as a reader would, on copies of the sample mailbox, and looks at the files that they leave.

    run_example.py [--here] FOLDER SAMPLE COMMAND...

A task is the command with the task's word and its arguments behind it; where each task has a file of its own, the command holds
"*" in the place of the file's name. FOLDER is made new, SAMPLE is the sample mailbox. The command runs Windows programs, with
--here programs of this machine.
"""
import base64
import shutil
import subprocess
import sys
import unittest
from pathlib import Path

FILES = {"list": "list_and_edit", "attachments": "save_attachments", "build": "build_message", "encode": "encode_file"}
PROGRAMME = b"Spring concert\n\n1. Morning song\n2. The ferryman\n3. Lullaby\n"


class Example(unittest.TestCase):
    folder = Path()
    sample = Path()
    command = []
    drive = "Z:"

    def setUp(self):
        shutil.rmtree(self.folder, ignore_errors=True)
        self.folder.mkdir(parents=True)
        self.mailbox = self.folder / "box.mbox"
        shutil.copyfile(self.sample, self.mailbox)

    def run_task(self, task, *arguments):
        words = [word.replace("*", FILES[task]) for word in self.command]
        if words == self.command:
            words.append(task)
        words += [f"{self.drive}{argument}" for argument in arguments]
        return subprocess.run(words, stdout=subprocess.PIPE, timeout=300)

    def output_of(self, task, *arguments):
        done = self.run_task(task, *arguments)
        self.assertEqual(done.returncode, 0, done.stdout)
        return done.stdout.decode("utf-8", "replace")

    def test_list_and_edit(self):
        output = self.output_of("list", self.mailbox)
        self.assertIn("5 messages", output)
        self.assertIn("Rehearsal moved to Thursday", output)
        self.assertIn("Mailbox almost full", output)
        first_message = self.mailbox.read_bytes().split(b"\r\n\r\n")[0]
        self.assertTrue(first_message.endswith(b"\r\nX-Reviewed: yes"), first_message)

    def test_save_attachments(self):
        self.output_of("attachments", self.mailbox, self.folder)
        self.assertEqual((self.folder / "2-0-programme.txt").read_bytes(), PROGRAMME)
        self.assertEqual(self.mailbox.read_bytes(), self.sample.read_bytes())

    def test_build_message(self):
        attached, built = self.folder / "programme.txt", self.folder / "new.eml"
        attached.write_bytes(PROGRAMME)
        output = self.output_of("build", built, attached)
        self.assertIn("Subject: The programme", output)
        message = built.read_bytes()
        self.assertIn(b"<p>Here is the <b>programme</b>.</p>", message)
        self.assertIn(b'filename="programme.txt"', message)
        self.assertIn(base64.encodebytes(PROGRAMME).replace(b"\n", b"\r\n"), message)

    def test_encode_file(self):
        plain, encoded = self.folder / "programme.txt", self.folder / "encoded.txt"
        plain.write_bytes(PROGRAMME)
        self.output_of("encode", plain, encoded)
        self.assertEqual(encoded.read_bytes(), base64.encodebytes(PROGRAMME).replace(b"\n", b"\r\n"))

    def test_a_missing_mailbox_is_reported(self):
        done = self.run_task("list", self.folder / "missing.mbox")
        self.assertEqual(done.returncode, 1)
        self.assertIn(b"30001", done.stdout)
        self.assertIn(b"Cannot open mailbox file", done.stdout)


if __name__ == "__main__":
    arguments = sys.argv[1:]
    if arguments[0] == "--here":
        Example.drive, arguments = "", arguments[1:]
    Example.folder, Example.sample = Path(arguments[0]), Path(arguments[1])
    Example.command = arguments[2:]
    unittest.main(argv=sys.argv[:1], verbosity=2)
