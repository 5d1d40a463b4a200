"""Four tasks in Python with comtypes, which reads the type library and calls through the table of methods:

    python mailbox_tasks_comtypes.py list MAILBOX                  lists the messages and marks the first as reviewed
    python mailbox_tasks_comtypes.py attachments MAILBOX FOLDER    saves what is attached
    python mailbox_tasks_comtypes.py build MESSAGE ATTACHED        writes a new message
    python mailbox_tasks_comtypes.py encode FILE ENCODED           encodes a file with Base64
"""
import re
import sys
from pathlib import Path

import comtypes.client


def create(name):
    return comtypes.client.CreateObject("Quorvane." + name)


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
    # A property with an argument is written with brackets.
    box.Messages.Item[0].Headers.Add("X-Reviewed", "yes")
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
    except comtypes.COMError as error:
        # The details begin with description and source; the component's number is in the low 16 bits of the status.
        description, source = error.details[:2]
        sys.exit(f"Error {error.hresult & 0xFFFF} of {source}: {description or error.text}")
