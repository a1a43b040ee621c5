#!/usr/bin/env python3
"""usage: samples.py SOURCE BUILD

Runs what the documents show, as it stands: the fenced sh, bash, python and cpp blocks of the pages below, and the
EXAMPLES of the manual pages. What is shown under another name (console) is for reading. Programs and library are those
of BUILD, installed into a folder of the test's own, which is also where the samples run. Boxes are answered with Return.
"""

import os
import re
import shutil
import signal
import subprocess
import sys
import tempfile

# Each document, and words that its samples print, in this order.
DOCUMENTS = {
    "README.md": ["isShown", "totalProgress=", "16384"],
    "docs/quickstart.md": ["done", "kept", "nobody clicked", "is kept", "copied", "yes", "isShown\ntotalProgress=0|-1\ntotalProgress=50|-1\n"],
    "python/README.md": ["yes"],
    "docs/protocol.md": ["isShown", "16384"],
    "docs/man/progressd.1": [],
    "docs/man/progressctl.1": ["kept"],
}
# Scripts of the reader's own that samples name.
SCRIPTS = ["my-script.sh", "backup.sh"]
PATIENCE_S = 120


def fenced(text):
    """Blocks of a Markdown page, as (language, code)."""
    return [block for block in re.findall(r"^```(\w+)\n(.*?)^```$", text, re.M | re.S) if block[0] in COMMANDS]


def displayed(text):
    """Displays under EXAMPLES in a manual page, as (language, code)."""
    examples = re.split(r"^\.SH ", text, flags=re.M)
    examples = [section for section in examples if section.startswith("EXAMPLES\n")]
    displays = re.findall(r"^\.EX\n(.*?)^\.EE$", "".join(examples), re.M | re.S)
    return [("bash", re.sub(r"\\(.)", lambda escape: {"e": "\\"}.get(escape[1], escape[1]), code)) for code in displays]


COMPILE = "g++ -std=c++17 -x c++ $0 -x none $(pkg-config --cflags --libs progressclient) -o $0.program && $0.program"
COMMANDS = {
    "sh": lambda path: ["bash", "-euo", "pipefail", path],
    "bash": lambda path: ["bash", "-euo", "pipefail", path],
    "python": lambda path: ["python3", path],
    "cpp": lambda path: ["bash", "-c", COMPILE, path],
}

# Whoever asks gets the button that Return presses.
ANSWER_BOXES = """
while sleep 0.2; do
    for window in $(xdotool search --onlyvisible --class progressd); do
        if xprop -id $window _NET_WM_STATE | grep -q MODAL; then xdotool windowfocus $window key Return; fi
    done
done
"""


def traces(code):
    """Files that daemons leave whose names stand in a sample; other tests' daemons come and go at the same time."""
    folders = {"/tmp": "HalvornRunning_", "/var/tmp": "currentTimestamps_", "/var/instrument": "currentTimestamps_"}
    return {os.path.join(folder, name) for folder, start in folders.items() if os.path.isdir(folder)
            for name in os.listdir(folder) if name.startswith(start) and name[len(start):].rpartition(".")[0] in code}


def clear_away(code, known):
    for path in traces(code) - known:
        if path.endswith(".lock"):
            identifier = path[len("/tmp/HalvornRunning_"):-len(".lock")]
            subprocess.run(["progressctl", "-i", identifier, "stop"], capture_output=True, check=False)
    for path in traces(code) - known:
        os.remove(path)


def run(language, code, folder):
    """Exit status and output of a sample."""
    path = os.path.join(folder, "sample")
    with open(path, "w", encoding="utf-8") as file:
        file.write(code)
    known = traces(code)
    sample = subprocess.Popen(COMMANDS[language](path), cwd=folder, start_new_session=True, stdin=subprocess.DEVNULL,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
    try:
        output = sample.communicate(timeout=PATIENCE_S)[0]
    except subprocess.TimeoutExpired:
        os.killpg(sample.pid, signal.SIGKILL)
        return "none in time", sample.communicate()[0]
    finally:
        clear_away(code, known)
    return sample.returncode, output


def check_document(source, name, words, folder):
    """What is wrong with a document's samples, as a text, empty if nothing is."""
    with open(os.path.join(source, name), encoding="utf-8") as file:
        text = file.read()
    samples = fenced(text) if name.endswith(".md") else displayed(text)
    printed = ""
    for language, code in samples:
        status, output = run(language, code, folder)
        if status != 0:
            return f"{name}: exit status {status} of\n{code}\nwhich said:\n{output}"
        printed += output
    if not re.search(".*".join(map(re.escape, words)), printed, re.S):
        return f"{name}: not {words} in this order, but:\n{printed}"
    return "" if samples else f"{name}: has no samples"


def prepare(build, folder):
    """The environment of a user who has installed everything, with an empty home."""
    subprocess.run(["cmake", "--install", build, "--prefix", f"{folder}/usr"], check=True, stdout=subprocess.DEVNULL)
    libraries = [root for root, _, files in os.walk(f"{folder}/usr") if "progressclient.pc" in files][0]
    os.environ.update(HOME=folder, XDG_RUNTIME_DIR=folder, XDG_STATE_HOME=folder + "/state", PROGRESS_IDENTIFIER=f"samples{os.getpid()}",
                      LC_ALL="C.UTF-8", PATH=f"{folder}/usr/bin:{os.environ['PATH']}", PKG_CONFIG_PATH=libraries,
                      LD_LIBRARY_PATH=os.path.dirname(libraries), PYTHONPATH=f"{folder}/usr/lib/python3/dist-packages")
    for script in SCRIPTS:
        with open(os.path.join(folder, script), "w", encoding="ascii") as file:
            file.write("#!/bin/sh\necho 50\nsleep 0.2\necho 100\n")
        os.chmod(file.name, 0o755)


def main(source, build):
    folder = tempfile.mkdtemp(prefix="samples-")
    answers = None
    try:
        prepare(build, folder)
        answers = subprocess.Popen(["bash", "-c", ANSWER_BOXES], stderr=subprocess.DEVNULL, start_new_session=True)
        faults = [check_document(source, name, words, folder) for name, words in DOCUMENTS.items()]
    finally:
        if answers:
            os.killpg(answers.pid, signal.SIGTERM)
        shutil.rmtree(folder)
    sys.exit("\n".join(filter(None, faults)) or 0)


if __name__ == "__main__":
    main(*map(os.path.abspath, sys.argv[1:3]))
