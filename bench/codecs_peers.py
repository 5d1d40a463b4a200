"""Times the codecs of Python's standard library on the files that codecs_bench made, for its table.

Usage: codecs_peers.py FOLDER. Prints "COLUMN GIGABYTES_PER_SECOND" a line; input is counted.
"""

import base64
import binascii
import statistics
import sys
import time


def uu_encode(data):
    for start in range(0, len(data), 45):
        binascii.b2a_uu(data[start : start + 45])


def uu_decode(text):
    for line in text.splitlines():
        binascii.a2b_uu(line)


COLUMNS = {
    "b64enc_lines": ("raw", base64.encodebytes),
    "b64enc_flat": ("raw", binascii.b2a_base64),
    "b64dec_lines": ("b64_lines", binascii.a2b_base64),
    "b64dec_flat": ("b64_flat", binascii.a2b_base64),
    "qpenc_text": ("text", lambda data: binascii.b2a_qp(data, istext=True)),
    "qpdec_text": ("qp_text", binascii.a2b_qp),
    "qpenc_dense": ("dense", lambda data: binascii.b2a_qp(data, istext=True)),
    "qpdec_dense": ("qp_dense", binascii.a2b_qp),
    "uuenc": ("raw", uu_encode),
    "uudec": ("uu", uu_decode),
}

for column, (name, run) in COLUMNS.items():
    with open(f"{sys.argv[1]}/{name}", "rb") as file:
        data = file.read()
    times = []
    for _ in range(3):
        start = time.process_time()
        run(data)
        times.append(time.process_time() - start)
    print(column, len(data) / statistics.median(times) / 1e9)
