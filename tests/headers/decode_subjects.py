"""Decodes header values with Python's email.header, for comparison.

Reads one value a line, as hexadecimal bytes. Writes one line for each: "= " and the text as hexadecimal UTF-8 where
Python's rules and the component's coincide, else "# " and the rule that keeps them apart.
"""

import base64
import email.header
import re
import sys

WORD = re.compile(r"=\?([^?\s]*)\?([bBqQ])\?([^?\s]*)\?=")
SAME_AS_1252 = ("us-ascii", "iso-8859-1")


def difference(value):
    if re.search(r"[^\x00-\x7f]", value):
        return "raw 8-bit bytes are widened with the code page of the value"
    if "\r\n" in re.sub(r"(?<=\?=)\r\n\t(?==\?)", "", value):
        return "folds led by a space stay, TAB folds go with their TAB"
    if value != value.lstrip():
        return "leading white space stays"
    words = WORD.findall(value)
    if value.count("=?") != len(words):
        return "what is no well-formed word ends the decoding"
    if re.search(r"\?=[ \t]+=\?", value):
        return "white space between words stays"
    charsets = {charset.lower() for charset, _, _ in words}
    if len(charsets) > 1:
        return "one code page serves all words"
    for charset in charsets:
        if charset != "utf-8" and not charset.startswith("windows-") and charset not in SAME_AS_1252:
            return "no other charset name is known"
    for charset, encoding, text in words:
        if encoding in "bB":
            if not re.fullmatch(r"(?:[A-Za-z0-9+/]{4})*(?:[A-Za-z0-9+/]{2}==|[A-Za-z0-9+/]{3}=)?", text):
                return "Base64 ends at the first stranger"
            decoded = base64.b64decode(text)
        else:
            if re.search(r"=(?![0-9A-Fa-f]{2})", text):
                return "broken escapes are passed on in upper case"
            decoded = bytes(text, "ascii")
        if b"\0" in decoded:
            return "decoded text ends at its first NUL"
        if charset.lower() in SAME_AS_1252 and re.search(rb"[\x80-\x9f]", decoded):
            return "other charsets are widened with the system's code page"
    return None


def main():
    for line in sys.stdin:
        value = bytes.fromhex(line.strip()).decode("latin-1")
        apart = difference(value)
        if apart is None:
            try:
                pieces = email.header.decode_header(value)
                text = "".join(
                    piece if isinstance(piece, str) else piece.decode(charset or "ascii") for piece, charset in pieces
                )
            except UnicodeDecodeError:
                apart = "malformed bytes become replacement characters"
            else:
                if "=?" in text:
                    apart = "decoded text that forms a word is decoded again"
        print("# " + apart if apart else "= " + text.encode("utf-8").hex())


main()
