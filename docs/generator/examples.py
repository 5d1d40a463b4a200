#!/usr/bin/python3
"""Runs the examples of the manual as they stand:

  examples.py sh PROGRAM                        `sh` blocks, with PROGRAM as `vellobar`
  examples.py windows FOLDER [PASCAL] RUNNER... `vb` and `jscript` blocks by a Windows script host
  examples.py python                            `python` blocks are compiled, not run: they need Windows
  examples.py source LANGUAGE FILE              writes the one block in `cpp` or `delphi` to FILE, for a compiler
  examples.py cpp PROGRAM                       runs what the compiler made of it

A page's examples run one after the other in a folder that holds a fresh copy of examples/sample.mbox as inbox.mbox. A
`text` block right behind an example is what it prints, byte for byte; an example without one may print anything. Under
Windows that folder is C:\\mail: FOLDER is the Windows installation's drive C, RUNNER the command that starts a Windows
program, and PASCAL (--pascal=PROGRAM) what a compiler made of the `delphi` block, which then runs as well.
"""

import os
import shutil
import subprocess
import sys
import tempfile
from dataclasses import dataclass
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
DOCS = ROOT / "docs"
SAMPLE = ROOT / "examples/sample.mbox"
CAME_TO_ITS_END = "-- the example came to its end --"
LONGEST_RUN, LONGEST_SESSION = 120, 800  # seconds
SCRIPTS = {"vb": ("vbs", f'\nWScript.Echo "{CAME_TO_ITS_END}"\n'),
           "jscript": ("js", f"\nWScript.Echo('{CAME_TO_ITS_END}');\n")}


@dataclass
class Example:
    page: str
    line: int
    language: str
    code: str
    printed: str  # None when the page does not show it
    output: Path = None


def examples_of(page, source):
    """The fenced blocks of a page; a `text` block behind one, with nothing between but an empty line, is its output."""
    found, block, start, language, previous_end = [], None, 0, "", -2
    for number, line in enumerate(source.splitlines(), 1):
        if block is None and line.startswith("```"):
            block, start, language = [], number, line[3:].strip()
        elif block is not None and line == "```":
            text = "\n".join(block) + "\n"
            if language == "text" and found and start - previous_end <= 2:
                found[-1].printed = text
            else:
                found.append(Example(page, start, language, text, None))
            block, previous_end = None, number
        elif block is not None:
            block.append(line)
    return found


def all_examples(languages):
    """By page: the examples in these languages."""
    pages = {}
    for path in sorted(DOCS.rglob("*.md")):
        page = path.relative_to(DOCS).as_posix()
        wanted = [e for e in examples_of(page, path.read_text(encoding="utf-8")) if e.language in languages]
        if wanted:
            pages[page] = wanted
    return pages


def run(example, folder, program):
    """What an example printed; raises when it failed or took too long."""
    tools = folder.parent / "bin"
    tools.mkdir(exist_ok=True)
    if not (tools / "vellobar").exists():
        (tools / "vellobar").symlink_to(program)
    environment = os.environ | {"PATH": f"{tools}:{os.environ['PATH']}", "LC_ALL": "C.UTF-8", "TZ": "UTC"}
    command = ["bash", "-euo", "pipefail", "-c", example.code] if example.language == "sh" else [program]
    done = subprocess.run(command, cwd=folder, env=environment, encoding="utf-8",
                          capture_output=True, stdin=subprocess.DEVNULL, timeout=LONGEST_RUN)
    if done.returncode != 0:
        raise AssertionError(f"ended with {done.returncode}\n{done.stdout}{done.stderr}")
    return done.stdout


def check_printed(example, printed):
    if example.printed is not None and printed != example.printed:
        raise AssertionError(f"printed\n{printed}\ninstead of\n{example.printed}")


def report(examples, printed_by):
    """Says which examples did what the page shows; gives how many did not."""
    failed = 0
    for example in examples:
        name = f"docs/{example.page}:{example.line}"
        try:
            check_printed(example, printed_by(example))
            print(f"ok      {name}", flush=True)
        except (AssertionError, OSError, subprocess.SubprocessError) as problem:
            failed += 1
            print(f"FAILED  {name}: {problem}", flush=True)
    return failed


def run_pages(pages, program, folder):
    failed = 0
    for examples in pages.values():
        shutil.rmtree(folder, ignore_errors=True)
        folder.mkdir(parents=True)
        shutil.copyfile(SAMPLE, folder / "inbox.mbox")
        failed += report(examples, lambda example: run(example, folder, program))
    return failed


def run_on_windows(pages, drive, pascal_program, runner):
    """Runs every example in one Windows session, from one batch file: starting a session costs more than any script."""
    work = drive / "manual"
    shutil.rmtree(work, ignore_errors=True)
    work.mkdir()
    shutil.copyfile(SAMPLE, work / "inbox.mbox")
    batch = ["@echo off"]
    for page_number, examples in enumerate(pages.values()):
        batch += [r"if exist C:\mail rd /s /q C:\mail", r"md C:\mail", r"copy C:\manual\inbox.mbox C:\mail >nul"]
        for example in examples:
            example.output = work / f"{page_number}-{example.line}.out"
            command = pascal_program
            if example.language in SCRIPTS:
                suffix, end = SCRIPTS[example.language]
                script = example.output.with_suffix(f".{suffix}")
                script.write_text(example.code + end, encoding="cp1252")
                command = rf"cscript //nologo C:\manual\{script.name}"
            batch.append(rf"{command} >C:\manual\{example.output.name} 2>&1")
    (work / "run.bat").write_text("\r\n".join(batch) + "\r\n", newline="")
    subprocess.run([*runner, "cmd", "/c", r"C:\manual\run.bat"], stdin=subprocess.DEVNULL, timeout=LONGEST_SESSION,
                   check=True)
    return report([example for examples in pages.values() for example in examples], windows_output)


def windows_output(example):
    """What an example printed. A script host may end well after an error: a script that came to its end says so."""
    printed = example.output.read_bytes().decode("cp1252").replace("\r\n", "\n")
    if example.language not in SCRIPTS:
        return printed
    if not printed.endswith(CAME_TO_ITS_END + "\n"):
        raise AssertionError(f"stopped before its end\n{printed}")
    return printed.removesuffix(CAME_TO_ITS_END + "\n")


def compile_python(pages):
    failed = 0
    for page, examples in pages.items():
        for example in examples:
            try:
                compile(example.code, f"docs/{page}:{example.line}", "exec")
            except SyntaxError as problem:
                failed += 1
                print(f"FAILED  docs/{page}:{example.line}: {problem}")
    return failed


def write_source(language, path):
    ((example,),) = all_examples({language}).values()
    Path(path).write_text(example.code, encoding="utf-8")


def run_here(language, program):
    pages = all_examples({language})
    with tempfile.TemporaryDirectory() as work:
        return pages, run_pages(pages, Path(program).resolve(), Path(work) / "mail")


def run_there(drive, *command):
    pascal, runner = None, command
    if command[0].startswith("--pascal="):
        pascal, runner = "Z:" + command[0].removeprefix("--pascal=").replace("/", "\\"), command[1:]
    pages = all_examples({*SCRIPTS, "delphi"} if pascal else set(SCRIPTS))
    return pages, run_on_windows(pages, Path(drive), pascal, runner)


def main():
    match sys.argv[1:]:
        case ["source", language, path]:
            write_source(language, path)
            return
        case [("sh" | "cpp") as language, program]:
            pages, failed = run_here(language, program)
        case ["windows", drive, *command] if command:
            pages, failed = run_there(drive, *command)
        case ["python"]:
            pages = all_examples({"python"})
            failed = compile_python(pages)
        case _:
            sys.exit(__doc__)
    count = sum(map(len, pages.values()))
    print(f"{count - failed} of {count} examples as the manual shows them")
    sys.exit(1 if failed or not count else 0)


if __name__ == "__main__":
    main()
