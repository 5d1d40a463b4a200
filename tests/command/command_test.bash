#!/bin/bash
# The command line as a person meets it. Usage: command_test.bash [--windows] COMMAND...
# Each check runs the command with arguments and compares what it printed, to the byte, and its exit code. With --windows,
# lines may end with CR LF, and folders are joined with a backslash.
set -u
slash=/
longest=240
if [ "$1" = --windows ]; then
  slash='\'
  longest=150
  shift
fi
command=("$@")
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
export LC_ALL=C.UTF-8
failures=0

# Runs the command with arguments; what it prints goes to $folder/out and $folder/err.
run() {
  "${command[@]}" "$@" >"$folder/out" 2>"$folder/err" </dev/null
  local code=$?
  [ "$slash" = / ] || sed -i 's/\r$//' "$folder/out" "$folder/err"
  return $code
}

# check NAME EXPECTED_CODE EXPECTED_STDOUT EXPECTED_STDERR ARGUMENTS...
check() {
  local name=$1 code=$2 out=$3 err=$4
  shift 4
  run "$@"
  local got=$?
  if [ "$got" != "$code" ] || [ "$(cat "$folder/out")" != "$out" ] || [ "$(cat "$folder/err")" != "$err" ]; then
    failures=$((failures + 1))
    printf 'FAILED %s\n  exit code %s, expected %s\n--- out\n' "$name" "$got" "$code"
    diff <(printf '%s\n' "$out") "$folder/out"
    printf -- '--- err\n'
    diff <(printf '%s\n' "$err") "$folder/err"
  else
    printf 'ok %s\n' "$name"
  fi
}

printf 'From ann today\nFrom: =?utf-8?Q?J=C3=BCrgen?= <j@example.org>\nDate: Mon, 5 Jan 2026 10:00:00 +0000\nSubject: gr\xfc\xdfe\n\nfirst\x1b[2J\n\nFrom bob\nX: 1\n\nsecond\r\n' >"$folder/box"
: >"$folder/empty"
tab=$'\t'

check "list prints one line a message with decoded From, Date and Subject" 0 \
" INDEX     POSITION       SIZE    LINES  FROM${tab}DATE${tab}SUBJECT
     0            0        125        7  Jürgen <j@example.org>${tab}Mon, 5 Jan 2026 10:00:00 +0000${tab}grüße
     1          125         23        4  ${tab}${tab}" "" list "$folder/box"

check "list --separator-lines prints the line that introduces each message" 0 \
" INDEX     POSITION       SIZE    LINES  SEPARATOR LINE
     0            0        125        7  From ann today
     1          125         23        4  From bob" "" list --separator-lines "$folder/box"

check "list of an empty mailbox prints the heading only" 0 \
" INDEX     POSITION       SIZE    LINES  FROM${tab}DATE${tab}SUBJECT" "" list "$folder/empty"

check "a missing mailbox is a clear message" 1 "" \
"vellobar: cannot open mailbox $folder/none: there is no such file" list "$folder/none"

check "a folder is a clear message" 1 "" \
"vellobar: cannot open mailbox $folder: it is a folder" list "$folder"

check "show --headers prints the headers decoded" 0 \
"From: Jürgen <j@example.org>
Date: Mon, 5 Jan 2026 10:00:00 +0000
Subject: grüße" "" show "$folder/box" 0 --headers

check "show prints the text without control characters" 0 \
"From: Jürgen <j@example.org>
Date: Mon, 5 Jan 2026 10:00:00 +0000
Subject: grüße

first?[2J" "" show "$folder/box" 0

printf 'Subject: =?utf-8?Q?hello=0D=0AFrom:_boss@example.org=0A=0Atext=0D=0A_more=0A=09and=0Dmore?=\nX: folded\n  here\nY: =?utf-8?Q?ends=0D=0A?=\n\n' >"$folder/forged"
check "show indents what follows a line end in a header value" 0 \
"Subject: hello
${tab}From: boss@example.org
${tab}
${tab}text
 more
${tab}andmore
X: folded
  here
Y: ends
${tab}" "" show "$folder/forged" 0 --headers

check "an index outside the mailbox is a clear message" 1 "" \
"vellobar: there is no message 2: $folder/box holds 2 messages, counted from 0" show "$folder/box" 2

check "--version prints the component's version" 0 "vellobar 2.2.6.119" "" --version

# Coding: what one verb writes the other reads back, and the forms are those that everybody else writes.
head -c 100000 /dev/urandom >"$folder/raw"
for encoding in base64 qp uu binhex; do
  run encode --$encoding "$folder/raw" "$folder/coded" && run decode --$encoding "$folder/coded" "$folder/back"
  # UUencode and BinHex round a last group up: the result begins with the input and ends with at most two zero bytes.
  if cmp -s -n 100000 "$folder/raw" "$folder/back" && [ "$(stat -c %s "$folder/back")" -le 100002 ]; then
    echo "ok encode and decode --$encoding give the file back"
  else
    echo "FAILED encode and decode --$encoding give the file back"
    failures=$((failures + 1))
  fi
done
run encode --base64 "$folder/raw" "$folder/coded"
base64 -w 76 "$folder/raw" | sed 's/$/\r/' | cmp -s - "$folder/coded" || { echo "FAILED base64 lines"; failures=$((failures + 1)); }
check "a missing input is a clear message" 1 "" "vellobar: cannot read $folder/none: there is no such file" \
  encode --uu "$folder/none" "$folder/coded"
check "the same file as input and output is refused" 1 "" "vellobar: $folder/raw is both the input and the output" \
  decode --base64 "$folder/raw" "$folder/raw"
[ "$(stat -c %s "$folder/raw")" = 100000 ] || { echo "FAILED the refused file is whole"; failures=$((failures + 1)); }
run encode "$folder/raw" "$folder/coded"
[ $? = 2 ] || { echo "FAILED an encoding must be named"; failures=$((failures + 1)); }

mkdir "$folder/temporary"
export TMPDIR=$folder/temporary  # UU blocks found in text stay there
printf 'From a\nSubject: two\nContent-Type: multipart/mixed; boundary=X\n\n--X\nContent-Type: text/plain; charset=utf-8\n\ngr\xc3\xbc\xc3\x9fe\n--X\nContent-Type: application/zip; name="../one.zip"\nContent-Transfer-Encoding: base64\n\nQUJD\n--X\nContent-Transfer-Encoding: quoted-printable\nContent-Disposition: attachment; filename="one.zip"\n\nx=41\n--X--\nFrom b\n\nbegin 644 NUL\n#04)#\nend\n' >"$folder/parts"
check "show prints headers, the text in the charset of its part, the tree and the attachments" 0 \
"Subject: two
Content-Type: multipart/mixed; boundary=X

grüße

Parts:
  0 text/plain, 49 bytes
  1 application/zip, 93 bytes
  2 no type, 106 bytes

Attachments:
  0 ../one.zip (application/zip, about 3 bytes)
  1 one.zip (attachment, about 5 bytes)" "" show "$folder/parts" 0

check "attachments lists what every message holds" 0 \
"MESSAGE NUMBER       SIZE  ENCODING          TYPE${tab}NAME
      0      0          3  base64            application/zip${tab}../one.zip
      0      1          5  quoted-printable  attachment${tab}one.zip" "" attachments "$folder/parts"

check "attachments of one message lists that message" 0 \
"MESSAGE NUMBER       SIZE  ENCODING          TYPE${tab}NAME" "" attachments "$folder/parts" 1

check "attachments --scan-text finds UU blocks in the text" 0 \
"MESSAGE NUMBER       SIZE  ENCODING          TYPE${tab}NAME
      1      0         18  uuencode          ${tab}NUL" "" attachments "$folder/parts" 1 --scan-text

mkdir "$folder/save"
echo mine >"$folder/save/one.zip"
check "attachments --save stays in the folder, overwrites nothing and numbers what is there" 0 \
"$folder/save${slash}one (1).zip
$folder/save${slash}one (2).zip
$folder/save${slash}_NUL" "" attachments "$folder/parts" --save "$folder/save" --scan-text
saved=$(cat "$folder/save/one.zip" "$folder/save/one (1).zip" "$folder/save/one (2).zip" "$folder/save/_NUL")
[ "$saved" = "mine
ABCxA
ABC" ] || { echo "FAILED the extracted bytes: $saved"; failures=$((failures + 1)); }
[ ! -e "$folder/one.zip" ] || { echo "FAILED nothing is written outside the folder"; failures=$((failures + 1)); }

check "a missing folder to save into is a clear message" 1 "" \
"vellobar: cannot save into $folder/nowhere: there is no such folder" attachments "$folder/parts" --save "$folder/nowhere"
check "a missing message is a clear message" 1 "MESSAGE NUMBER       SIZE  ENCODING          TYPE${tab}NAME" \
"vellobar: there is no message 7: $folder/parts holds 2 messages, counted from 0" attachments "$folder/parts" 7

printf 'some\0bytes\xff' >"$folder/a file.bin"
check "new writes a message" 0 "" "" new "$folder/new.eml" --from 'Jürgen <j@example.org>' --to bob@example.org \
  --subject 'grüße' --text 'hallo' --html '<p>hallo' --attachment "$folder/a file.bin"
check "what new wrote is listed" 0 \
"MESSAGE NUMBER       SIZE  ENCODING          TYPE${tab}NAME
      0      0         12  base64            application/octet-stream${tab}a file.bin" "" attachments "$folder/new.eml"
run list "$folder/new.eml" && grep -q "Jürgen.*<j@example.org>.*grüße$" "$folder/out" ||
  { echo "FAILED what new wrote has its headers"; failures=$((failures + 1)); }
run attachments "$folder/new.eml" --save "$folder/save" && cmp "$folder/a file.bin" "$folder/save/a file.bin" ||
  { echo "FAILED what new attached comes back"; failures=$((failures + 1)); }
check "an attachment that is missing is a clear message" 1 "" \
"vellobar: cannot attach $folder/none: Cannot open file" new "$folder/other.eml" --text x --attachment "$folder/none"
[ ! -e "$folder/other.eml" ] || { echo "FAILED nothing is written without the attachment"; failures=$((failures + 1)); }
check "a message that cannot be written is a clear message" 1 "" \
"vellobar: cannot write $folder/nowhere/new.eml: there is no such folder" new "$folder/nowhere/new.eml" --text x

# File names beyond ASCII, in the mail, on the disk and as arguments.
mkdir "$folder/grün"
printf 'From a\nContent-Type: application/x; name="=?utf-8?Q?gr=C3=BC=C3=9Fe.bin?="\nContent-Transfer-Encoding: base64\n\nQUJD\n' >"$folder/Jürgen"
check "an attachment keeps a name beyond ASCII, in such a folder from such a mailbox" 0 \
"$folder/grün${slash}grüße.bin" "" attachments "$folder/Jürgen" --save "$folder/grün"
[ "$(cat "$folder/grün/grüße.bin")" = ABC ] || { echo "FAILED the file with a name beyond ASCII"; failures=$((failures + 1)); }
check "new attaches such a file to such a message" 0 "" "" new "$folder/Größe.eml" --text x --attachment "$folder/grün/grüße.bin"
check "a name beyond ASCII is shown" 0 \
"MESSAGE NUMBER       SIZE  ENCODING          TYPE${tab}NAME
      0      0          3  base64            application/octet-stream${tab}grüße.bin" "" attachments "$folder/Größe.eml"
check "what was attached comes back under its number" 0 "$folder/grün${slash}grüße (1).bin" "" \
  attachments "$folder/Größe.eml" --save "$folder/grün"
check "a missing mailbox with such a name is a clear message" 1 "" \
"vellobar: cannot open mailbox $folder/grün/fehlt.mbox: there is no such file" list "$folder/grün/fehlt.mbox"

# Names too long for a file system.
long=$(printf 'n%.0s' {1..300})
printf 'From a\nContent-Type: application/x; name="%s.txt"\nContent-Transfer-Encoding: base64\n\nQUJD\n' "$long" >"$folder/long"
mkdir "$folder/short"
check "a long name is shortened and keeps its extension" 0 "$folder/short${slash}${long:0:longest - 4}.txt" "" \
  attachments "$folder/long" --save "$folder/short"

run --help && grep -q 'list' "$folder/out" && grep -q 'show' "$folder/out" ||
  { echo "FAILED --help names the verbs"; failures=$((failures + 1)); }
run
[ $? = 2 ] || { echo "FAILED wrong use exits with 2"; failures=$((failures + 1)); }
run list "$folder/box" --nonsense
[ $? = 2 ] || { echo "FAILED an unknown option exits with 2"; failures=$((failures + 1)); }

if [ "$(id -u)" != 0 ]; then
  chmod 0 "$folder/box"
  check "an unreadable mailbox is a clear message" 1 "" \
    "vellobar: cannot open mailbox $folder/box: permission denied" list "$folder/box"
fi

[ "$failures" = 0 ]
