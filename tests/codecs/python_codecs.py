"""Codes bytes with Python's base64, quopri and binascii, for comparison.

Reads lines of a routine's name and its input as hexadecimal bytes. Writes one line for each: "= " and the result as
hexadecimal bytes where Python's rules and the component's coincide, else "# " and the rule that keeps them apart.
"""

import base64
import binascii
import quopri
import re
import sys


def encode_base64(data):
    return base64.b64encode(data)


def encode_base64_file(data):
    if len(data) % 57 == 0:
        return "a file that ends with a full line, or is empty, gets one more line end"
    return base64.encodebytes(data).replace(b"\n", b"\r\n")


def decode_base64(text):
    text = re.sub(rb"[\r\n]", b"", text)
    if b"\0" in text:
        return "a NUL reads as zero bits"
    data = re.match(rb"(?:[A-Za-z0-9+/]{4})*", text)
    rest = text[data.end() :]
    if re.fullmatch(rb"[A-Za-z0-9+/]{1,3}", rest):
        return "an unpadded last group gives three bytes"
    if rest and not re.match(rb"[A-Za-z0-9+/]{2}==|[A-Za-z0-9+/]{3}=", rest):
        return "data end at the group with the first stranger, which gives what its letters reach"
    return binascii.a2b_base64(text[: data.end() + 4])


def uu_lines(data):
    return [binascii.b2a_uu(data[start : start + 45], backtick=True) for start in range(0, len(data), 45)]


def encode_uu_file(data):
    if len(data) % 3 == 0:
        return "a last line of whole groups has neither a length of its own nor a line end"
    text = b"".join(uu_lines(data)).replace(b"\n", b"\r\n")
    # No letters for bytes that are not there.
    return text[: -2 - (3 - len(data) % 3)] + b"\r\n"


def encode_uu(data):
    letters = b"".join(line[1:-1] for line in uu_lines(data))
    missing = -len(data) % 3
    return letters[: len(letters) - missing]


def decode_uu_file(text):
    return b"".join(binascii.a2b_uu(line) for line in text.splitlines())


def encode_quoted_printable(data):
    if re.search(rb"[\x00-\x08\x0b-\x1f\x7f]", data.replace(b"\r\n", b"")) or b"\n" in data.replace(b"\r\n", b""):
        return "control characters, and line ends other than CR LF, stay as they are"
    if re.search(rb"[ \t](?=\r\n|$)", data):
        return "white space at the end of a line stays as it is"
    if re.search(rb"(?:^|\n)\.(?:\r\n|$)", data):
        return "a line of one full stop stays as it is"
    text = quopri.encodestring(data)
    if b"=\r\n" in text or b"=\n" in text or max(map(len, text.split(b"\r\n"))) > 72:
        return "long lines are broken elsewhere"
    return text


def decode_quoted_printable(text, header=False):
    if re.search(rb"=(?:\r?\n|\r)", text.replace(b"=\r\n", b"")):
        return "only CR LF makes a soft line break"
    if re.search(rb"=(?![0-9A-Fa-f]{2}|\r\n)", text):
        return "broken escapes are passed on, or give one byte in a file"
    return binascii.a2b_qp(text, header=header)


ROUTINES = {
    "encode_base64": encode_base64,
    "encode_base64_file": encode_base64_file,
    "decode_base64": decode_base64,
    "encode_uu": encode_uu,
    "encode_uu_file": encode_uu_file,
    "decode_uu_file": decode_uu_file,
    "encode_uu_file_with_padding": lambda data: b"".join(uu_lines(data)),
    "encode_quoted_printable": encode_quoted_printable,
    "decode_quoted_printable": decode_quoted_printable,
    "decode_quoted_printable_word": lambda text: decode_quoted_printable(text, header=True),
}

for line in sys.stdin:
    routine, _, hexadecimal = line.rstrip("\n").partition(" ")
    result = ROUTINES[routine](bytes.fromhex(hexadecimal))
    print("# " + result if isinstance(result, str) else "= " + result.hex())
