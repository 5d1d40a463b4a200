#!/bin/bash
# Writes down how the core, as a native program under sanitizers, reads all real mail, for the Windows tests to compare with.
# Usage: record_real_mail.bash SOURCE_FOLDER OUT
set -eu
cd "$1"
cmake --preset asan
cmake --build --preset asan --target record_mail
ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=halt_on_error=1:print_stacktrace=1 build/asan/record_mail "$2"
