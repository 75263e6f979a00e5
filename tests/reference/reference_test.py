"""Checks what is made from the definitions of the options: docs/options.md, man pages, and completions, in real shells.

Arguments: the program ventrix, the folder of the generated files, the folder of the sources.
"""
import os
import pathlib
import pty
import re
import select
import shutil
import subprocess
import sys
import tempfile
import time
import unittest

PROGRAM = pathlib.Path(sys.argv[1]).resolve()
GENERATED = pathlib.Path(sys.argv[2]).resolve()
ROOT = pathlib.Path(sys.argv[3]).resolve()
COMMANDS = ["publish", "validate", "request", "init"]
MAN_PAGES = ["ventrix.1", "ventrix-publish.1", "ventrix-validate.1", "ventrix-request.1", "ventrix.toml.5"]

# Prints COMPREPLY as bash would see it for the words in the arguments.
BASH_SCRIPT = """
source "$1"; shift
COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1))
_ventrix
printf '%s\\n' "${COMPREPLY[@]}"
"""

# Writes each match that is added to the file $HITS, and "done" when Ctrl-F is typed.
ZSH_SCRIPT = """
PS1=; LISTMAX=10000
fpath=($GENERATED $fpath); autoload -Uz compinit; compinit -u -D
compadd() {
    if [[ " $* " == *' -'[OAD]' '* ]]; then builtin compadd "$@"; return; fi
    local -a hits
    builtin compadd -O hits "$@"
    print -rl -- $hits >> $HITS
    builtin compadd "$@"
}
finish() { print done >> $HITS; BUFFER=; }
zle -N finish; bindkey '^F' finish
"""


def run(*words, **settings):
    return subprocess.run(words, check=True, capture_output=True, text=True, **settings).stdout


def options_of(command):
    """The options as the help prints them, long and short."""
    names = re.findall(r"^  (?:(-\w),)?(--[a-z-]+)", run(PROGRAM, "help", command), re.M)
    return {name for pair in names for name in pair if name}


def with_bash(line, folder):
    words = re.findall(r"=|[^ =]+", line) + ([""] if line.endswith(" ") else [])
    return run("bash", "-c", BASH_SCRIPT, "bash", GENERATED / "ventrix.bash", *words, cwd=folder).splitlines()


def with_fish(line, folder):
    script = f"source {GENERATED}/ventrix.fish; complete -C '{line}'"
    return [hit.split("\t")[0] for hit in run("fish", "--no-config", "-c", script, cwd=folder).splitlines()]


def with_zsh(line, folder):
    with tempfile.TemporaryDirectory() as place:
        hits = pathlib.Path(place) / "hits"
        setup = pathlib.Path(place) / "setup"
        setup.write_text(ZSH_SCRIPT)
        environment = {**os.environ, "GENERATED": str(GENERATED), "HITS": str(hits), "TERM": "vt100"}
        process, terminal = pty.fork()
        if process == 0:
            os.chdir(folder)
            os.execvpe("zsh", ["zsh", "-f", "-i"], environment)
        os.write(terminal, f" source {setup}\n{line}\t\x06".encode())
        deadline = time.monotonic() + 60
        while not (hits.exists() and hits.read_text().endswith("done\n")):
            if time.monotonic() > deadline:
                raise TimeoutError(f"zsh did not complete '{line}'")
            if select.select([terminal], [], [], 0.05)[0]:
                os.read(terminal, 65536)
        os.write(terminal, b"exit\n")
        os.close(terminal)
        os.waitpid(process, 0)
        return hits.read_text().splitlines()[:-1]


class Completion(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        (pathlib.Path(cls.folder.name) / "guide.ditamap").touch()
        (pathlib.Path(cls.folder.name) / "place").mkdir()

    @classmethod
    def tearDownClass(cls):
        cls.folder.cleanup()

    def check(self, shell, complete):
        if shutil.which(shell) is None:
            self.skipTest(f"{shell} is not installed")
        rows = [
            ("ventrix va", {"validate"}),
            ("ventrix help ", set(COMMANDS)),
            ("ventrix publish --xslt-engine ", {"libxslt", "saxon"}),
            ("ventrix publish --xslt-engine=s", {"saxon"}),
            ("ventrix validate --format ", {"text", "json", "sarif", "junit", "codequality"}),
            ("ventrix publish -o ", {"place"}),
            ("ventrix publish --xslt ", {"place", "guide.ditamap"}),
            ("ventrix publish --toolkit ", {"place", "builtin", "installed"}),
            ("ventrix publish --attributes ", set()),
            ("ventrix publish --map gui", {"guide.ditamap"}),
            ("ventrix validate --xsl", set()),
            ("ventrix request --json ", set()),
        ]
        rows += [(f"ventrix {command} --", {name for name in options_of(command) if name.startswith("--")})
                 for command in COMMANDS]
        for line, expected in rows:
            hits = {hit.rstrip("/=").removeprefix("--xslt-engine=") for hit in complete(line, self.folder.name)}
            self.assertEqual(hits - {""}, expected, line)
        with tempfile.TemporaryDirectory() as project:
            (pathlib.Path(project) / "ventrix.toml").write_text(
                'attributes = ["name"]\n[[publish]]\nname = "online"\n[[publish]]\n  name="on-site" # a comment\n')
            for command, expected in [("publish", {"online", "on-site"}), ("validate", {"online", "on-site"}), ("init", set())]:
                self.assertEqual(set(complete(f"ventrix {command} on", project)) - {""}, expected, command)
        self.assertLessEqual(set(COMMANDS) | {"help"}, set(complete("ventrix ", self.folder.name)))

    def test_bash(self):
        self.check("bash", with_bash)

    def test_zsh(self):
        self.check("zsh", with_zsh)

    def test_fish(self):
        self.check("fish", with_fish)


class Reference(unittest.TestCase):
    def test_the_page_of_the_options_is_up_to_date(self):
        self.assertEqual((ROOT / "docs/options.md").read_text(encoding="utf-8"),
                         (GENERATED / "options.md").read_text(encoding="utf-8"), "run ./dev reference")

    def test_each_option_of_the_help_has_an_entry(self):
        page = (GENERATED / "options.md").read_text(encoding="utf-8")
        for command in COMMANDS:
            section = page.split(f"## ventrix {command}\n")[1].split("\n## ")[0]
            manual = GENERATED / f"ventrix-{command}.1"
            for name in options_of(command) - {"-h", "--help"}:
                self.assertRegex(section, rf"\| .*`{name}[ `]")
                self.assertIn(name.replace("-", "\\-") + "\\fR", manual.read_text(encoding="utf-8"))

    def test_the_manual_has_no_errors(self):
        if shutil.which("man") is None:
            self.skipTest("man is not installed")
        for page in MAN_PAGES:
            shown = subprocess.run(["man", "--warnings", "--local-file", GENERATED / page], capture_output=True, text=True,
                                   env={**os.environ, "LC_ALL": "C.UTF-8", "MANWIDTH": "100"})
            self.assertEqual(shown.stderr, "", page)
            self.assertNotRegex(shown.stdout, r"\\f|`|@", page)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)
