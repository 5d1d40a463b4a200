"""Four tasks in Python with pywin32 (late-bound):

    python mailbox_tasks_pywin32.py list MAILBOX                  lists the messages and marks the first as reviewed
    python mailbox_tasks_pywin32.py attachments MAILBOX FOLDER    saves what is attached
    python mailbox_tasks_pywin32.py build MESSAGE ATTACHED        writes a new message
    python mailbox_tasks_pywin32.py encode FILE ENCODED           encodes a file with Base64
"""
import re
import sys
from pathlib import Path

import pywintypes
import win32com.client


def create(name):
    return win32com.client.Dispatch("Quorvane." + name)


def open_mailbox(path):
    box = create("Vellobar")
    box.Filename = path
    box.Lock()
    return box


def list_and_edit(path):
    box = open_mailbox(path)
    print(box.Messages.Count, "messages")
    for message in box.Messages:
        print(f"{message.Index}: {message.FromName}: {message.Subject} ({message.Size} bytes)")
    box.Messages.Item(0).Headers.Add("X-Reviewed", "yes")
    box.Update()
    box.Unlock()


def save_attachments(path, folder):
    box = open_mailbox(path)
    for message in box.Messages:
        for number, attachment in enumerate(message.Attachments):
            # The name is the sender's: what would lead to another folder or is not allowed in a file name is replaced.
            name = re.sub(r'[\\/:*?"<>|]', "_", attachment.Name)
            target = Path(folder, f"{message.Index}-{number}-{name}")
            attachment.Save(str(target))
            print(target)
    box.Unlock()


def build_message(path, attached):
    # The part of the path behind its last backslash becomes the name of the attachment: it has to be a whole path.
    create("Vellobar").CreateTextHtmlAttachmentMessage(
        path, "Mara Lindqvist <mara@example.org>", "choir@example.net", "The programme", "Here is the programme.",
        "<p>Here is the <b>programme</b>.</p>", str(Path(attached).resolve()))
    built = create("Message")
    built.Peek(path)
    print(built.Headers.ToString())


def encode_file(path, encoded):
    create("Encoder").Base64(path, encoded)


TASKS = {"list": list_and_edit, "attachments": save_attachments, "build": build_message, "encode": encode_file}

if __name__ == "__main__":
    if len(sys.argv) < 3 or sys.argv[1] not in TASKS:
        sys.exit(__doc__)
    try:
        TASKS[sys.argv[1]](*sys.argv[2:])
    except pywintypes.com_error as error:
        # The exception's details hold source, description and status; the component's number is in the low 16 bits.
        if error.excepinfo is None:
            sys.exit(f"Status {error.hresult & 0xFFFFFFFF:#010x}: {error.strerror}")
        _, source, description, _, _, status = error.excepinfo
        sys.exit(f"Error {status & 0xFFFF} of {source}: {description}")
