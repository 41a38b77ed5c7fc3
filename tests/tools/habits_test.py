"""What dhcptool and dhcprelay have in common: help, version, wrong command lines, manual pages and completions."""

import functools
import os
import re
import shutil
import subprocess
import tempfile
import unittest

from capture_files import bundled

TOOL, RELAY = os.environ["DHCPTOOL"], os.environ["DHCPRELAY"]
PROGRAMS = {"dhcptool": TOOL, "dhcprelay": RELAY}


def run(*command, **more):
    done = subprocess.run(command, capture_output=True, text=True, timeout=60, check=False, **more)
    return done.returncode, done.stdout, done.stderr


@functools.cache
def helps():
    """The help of each program and command."""
    texts = []
    for program in PROGRAMS.values():
        top = run(program, "--help")[1]
        texts.append(top)
        for command in re.findall(r"^  (\w+) ", top.split("Commands:")[1].split("Options:")[0], re.M) if "Commands:" in top else []:
            texts.append(run(program, command, "--help")[1])
    return texts


class CommandLine(unittest.TestCase):
    def test_help_fits_80_columns(self):
        self.assertGreater(len(helps()), 4)
        for text in helps():
            self.assertTrue(text.startswith("Usage: "))
            self.assertEqual([line for line in text.splitlines() if len(line) > 80], [])

    def test_output_that_does_not_fit_is_an_error(self):
        for name, program in PROGRAMS.items():
            for option in ("--help", "--version", "--generate=man"):
                with open("/dev/full", "wb") as full:
                    done = subprocess.run([program, option], stdout=full, stderr=subprocess.PIPE, check=False)
                self.assertEqual((done.returncode, done.stderr), (1, f"{name}: cannot write the output\n".encode()))

    def test_wrong_words_are_named_and_the_right_ones_suggested(self):
        capture = bundled("v4-dhclient-dhcpd")
        for arguments, status, told in (
                (["snop"], 1, '"snop" is neither a command nor a file (did you mean snoop?)'),
                (["leasequrey", "--ip"], 1, "did you mean leasequery?"),
                (["snoop", "-r", capture, "--jsn"], 1, "--jsn (did you mean --json?)"),
                (["snoop", "-r", capture, "--type", "DHCPDISCOVR"], 1, "no message type: DHCPDISCOVR (did you mean discover?)"),
                (["zzz"], 1, '"zzz" is neither a command nor a file; see --help'), ([], 1, "required"),
                (["snoop", "-r", "/nowhere"], 2, "/nowhere")):
            found, out, err = run(TOOL, *arguments)
            self.assertEqual((found, out), (status, ""))
            self.assertIn(told, err)
        self.assertIn("did you mean --client?", run(RELAY, "--cleint", "eth0")[2])

    def test_file_is_read(self):
        capture = bundled("v4-dhclient-dhcpd")
        self.assertEqual(run(TOOL, capture, "--json"), run(TOOL, "snoop", "-r", capture, "--json"))
        self.assertEqual(run(TOOL, capture, "--json")[0], 0)

    def test_version_names_build_and_enterprise_number(self):
        for name, program in PROGRAMS.items():
            self.assertRegex(run(program, "--version")[1],
                             rf"^{name} \d+\.\d+\.\d+\nbuild [^ ,]+, \w+, \w+ [0-9.]+\nenterprise number \d+\n$")


class Documents(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(cls.folder.cleanup)
        cls.texts = {(name, kind): run(program, "--generate", kind)[1]
                     for name, program in PROGRAMS.items() for kind in ("man", "bash", "zsh", "fish")}
        for (name, kind), text in cls.texts.items():
            with open(cls.file(name, kind), "w") as out:
                out.write(text)

    @classmethod
    def file(cls, name, kind):
        return os.path.join(cls.folder.name, f"{name}.{kind}")

    def test_name_each_option(self):
        listed = {option for text in helps() for option in re.findall(r"^  .*?(--[a-z0-9-]+)", text, re.M)}
        self.assertIn("--link-selection", listed)
        for kind in ("man", "bash", "zsh", "fish"):
            text = "".join(self.texts[name, kind] for name in PROGRAMS).replace("\\-", "-")
            missing = [o for o in listed if o not in text and "-l " + o[2:] not in text]
            self.assertEqual(missing, [], kind)

    def test_are_well_formed(self):
        for name in PROGRAMS:
            for kind, checker in (("man", ["mandoc", "-Tlint"]), ("man", ["man", "--warnings", "-l", "-Tutf8"]),
                                  ("bash", ["bash", "-n"]), ("zsh", ["zsh", "-n"]), ("fish", ["fish", "-n"])):
                if shutil.which(checker[0]):
                    status, out, err = run(*checker, self.file(name, kind))
                    self.assertEqual((status, err), (0, ""), (name, checker))
                    self.assertTrue(checker[0] == "man" or out == "", out)

    def completed(self, *words):
        """What bash offers for the last word."""
        script = f"""source {self.file(words[0], "bash")}; complete -p {words[0]} >&2
            COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); _{words[0]}; echo "${{COMPREPLY[@]}}" """
        status, out, err = run("bash", "--norc", "-c", script, "bash", *words)
        self.assertEqual((status, err), (0, f"complete -F _{words[0]} {words[0]}\n"))
        return set(out.split())

    def test_complete_in_bash(self):
        for words, offered in ((("dhcptool", "sn"), {"snoop"}), (("dhcptool", "--ver"), {"--version"}),
                               (("dhcptool", "relay", "--circ"), {"--circuit-id"}),
                               (("dhcptool", "relay", "--generation", ""), {"old", "new"}),
                               (("dhcptool", "relay", "--generation", "=", "o"), {"old"}),
                               (("dhcptool", "snoop", "-i", "l"), {"lo"}), (("dhcptool", "snoop", "-r", ""), set()),
                               (("dhcprelay", "--trusted-option82", "k"), {"keep"}),
                               (("dhcprelay", "-c", "lo", "--hop-limit6", ""), set())):
            self.assertEqual(self.completed(*words), offered, words)


if __name__ == "__main__":
    unittest.main()
