"""Decodes attachments with Python's email package, for comparison.

Reads one attachment a line, divided by tabs: the mailbox, where the message begins and ends in it, where the coded bytes
begin and end, the encoding, and the file that holds what the component decoded. Writes one line for each: "=" where both
agree, "# " and the rule that keeps them apart, or "! " and what differs.
"""

import base64
import email
import functools
import quopri
import re
import sys

BASE64, QUOTED_PRINTABLE, SEVEN_BIT = "1", "4", "5"
NAMES = {BASE64: "base64", QUOTED_PRINTABLE: "quoted-printable", SEVEN_BIT: "7bit"}


@functools.lru_cache(maxsize=1)
def content(path):
    with open(path, "rb") as file:
        return file.read()


def without_separator(message):
    return message.partition(b"\n")[2] if message.startswith(b"From ") else message


@functools.lru_cache(maxsize=1)
def leaves(path, start, end):
    message = email.message_from_bytes(without_separator(content(path)[start:end]))
    found = []
    for part in message.walk():
        # The public getter turns 8-bit text into characters; here it is the bytes that count.
        payload = part._payload
        if isinstance(payload, str):
            encoding = str(part.get("Content-Transfer-Encoding", "")).strip().lower()
            found.append((encoding, payload.encode("ascii", "surrogateescape")))
    return found


def letters_behind(path, first, last):
    """What the last started block of 1024 bytes holds behind the end, as far as it still reads as Base64."""
    behind = content(path)[last : last + -(last - first) % 1024]
    return re.match(rb"[A-Za-z0-9+/]*", re.sub(rb"[\r\n]", b"", behind)).group()


def compare(path, start, end, first, last, encoding, saved):
    if encoding not in NAMES:
        return "# Python decodes neither UUencode parts of this kind nor BinHex"
    coded = content(path)[int(first) : int(last)]
    same = [found for found in leaves(path, int(start), int(end)) if found[1].rstrip() == coded.rstrip()]
    if not same:
        if encoding == SEVEN_BIT:
            return "# Python reads an attached message as parts, not as one leaf"
        return "# Python ends parts by exact delimiter lines and keeps a last part without one"
    if all(found[0] != NAMES[encoding] for found in same):
        return "# the transfer encoding is another or missing"
    with open(saved, "rb") as file:
        decoded = file.read()
    if encoding == SEVEN_BIT:
        expected = coded
    elif encoding == BASE64:
        letters = re.sub(rb"[\r\n]", b"", coded)
        if not re.fullmatch(rb"(?:[A-Za-z0-9+/]{4})*(?:[A-Za-z0-9+/]{2}==|[A-Za-z0-9+/]{3}=)?", letters):
            return "# Base64 ends at the first stranger"
        expected = base64.b64decode(letters)
        more = letters_behind(path, int(first), int(last)) if b"=" not in letters else b""
        if len(more) > 1:
            return "# a block of 1024 bytes that begins before the end is used whole"
    else:
        if re.search(rb"=(?![0-9A-Fa-f]{2}|\r\n)", coded):
            return '# only "=" CR LF is a soft line break, and every other escape gives one byte'
        if re.search(rb"[ \t](?:\r?\n|$)", coded):
            return "# white space before a line end stays"
        expected = quopri.decodestring(coded)
    return "=" if decoded == expected else "! %d bytes, Python has %d" % (len(decoded), len(expected))


for line in sys.stdin:
    print(compare(*line.rstrip("\n").split("\t")))
