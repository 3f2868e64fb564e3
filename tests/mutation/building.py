"""Builds the program and its tests once, and then only what a break changes."""

import json
import os
import pathlib
import shlex
import shutil
import subprocess
import threading

HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parents[1]

# The program without its main(). The program itself and every test link it.
LIBRARY = "libvantrel_program.so"

# The tests that are run. Left out are those of the simulated camera, which notice no break of the program, and those of
# the whole built program, which take seconds each.
ASKED = ["-R", "Test$", "-LE", "simulator|system"]

# Three times as fast as the usual one.
FAST_LINKER = next(([f"-fuse-ld={name}"] for name in ("lld", "gold") if shutil.which(f"ld.{name}")), [])

# With precompiled headers it takes less than half of GCC's time, and its objects can be linked with GCC's.
FAST_COMPILER = [name, "-fpch-instantiate-templates"] if (name := shutil.which("clang++")) else []


class RunStops(Exception):
    """The whole run cannot go on; the text says why."""


class DoesNotBuild(Exception):
    """The break does not compile, or it compiles to the same code as the original."""


def is_done(command, **options):
    return subprocess.run(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, **options).returncode == 0


def output_of(*command, **options):
    return subprocess.run(command, check=True, stdout=subprocess.PIPE, text=True, **options).stdout


class Build:
    """The program, as a shared library, and its tests, in a folder. Products are named by their paths in the folder."""

    def __init__(self, folder):
        self.folder = folder
        subprocess.run([ROOT / "packaging/configure", folder, "--preset", "mutation"], cwd=ROOT, check=True,
                       stdout=subprocess.DEVNULL)
        if not is_done(["cmake", "--build", folder, "--target", *self._listed_tests()]):
            raise RunStops(f"the program does not build without any break: cmake --build {folder}")
        # Only now does CTest know their commands.
        self.tests = self._listed_tests()

        entries = json.loads((folder / "compile_commands.json").read_text())
        commands = [shlex.split(entry["command"]) for entry in entries]
        self._compilations = {words[words.index("-o") + 1]: words for words in commands}
        self._links = {product: self._last_command(product) for product in [LIBRARY, *map(self.program_of, self.tests)]}
        self._files = {}
        for paragraph in output_of("ninja", "-C", folder, "-t", "deps").split("\n\n"):
            name, *files = paragraph.split("\n")
            self._files[name.split(":")[0]] = {os.path.join(folder, file.strip()) for file in files}
        self._precompiling = threading.Lock()

    def _listed_tests(self):
        """What CTest says about each test, by its name."""
        listing = json.loads(output_of("ctest", "--test-dir", self.folder, "--show-only=json-v1", *ASKED))
        return {test["name"]: test for test in listing["tests"]}

    def program_of(self, test):
        return os.path.relpath(self.tests[test]["command"][-1], self.folder)

    def _last_command(self, product):
        """The words of the command that makes a product, without the shell's part of it."""
        line = output_of("ninja", "-C", self.folder, "-t", "commands", product).splitlines()[-1]
        return next(shlex.split(part) for part in line.split(" && ") if not part.startswith((":", "cd ")))

    def objects_of(self, product, file):
        """The objects of a product that are compiled from a source file, or include it. A form counts as its header."""
        made_of = str(self.folder / header_of(file) if file.endswith(".ui") else ROOT / file)
        return [word for word in self._links[product] if made_of in self._files.get(word, ())]

    def generate(self, form, folder):
        """Makes the header of a form that is in the folder."""
        header = header_of(form)
        words = self._last_command(header)
        words[words.index("-o") + 1:] = [folder / header, folder / form]
        if not is_done(words) or (folder / header).read_bytes() == (self.folder / header).read_bytes():
            raise DoesNotBuild

    def link(self, product, objects, folder, options=()):
        """Links a product in a folder, with some objects compiled again, and returns its path.

        A source file that is in the folder replaces the original one.
        """
        words = [self._compile(word, folder, options) if word in objects else word for word in self._links[product]]
        words[words.index("-o") + 1] = folder / product
        (folder / product).parent.mkdir(parents=True, exist_ok=True)
        if not is_done([*words, *FAST_LINKER, *options], cwd=self.folder):
            raise DoesNotBuild
        return folder / product

    def _compile(self, name, folder, options):
        *words, source = self._compilations[name]
        broken = folder / os.path.relpath(source, ROOT)
        words[words.index("-o") + 1] = output = folder / name
        output.parent.mkdir(parents=True, exist_ok=True)
        compiler, taken_in = (words[:1], options) if options else (FAST_COMPILER or words[:1], self._precompiled(name))
        if not is_done([*compiler, "-w", "-I", folder, *taken_in, *words[1:],
                        broken if broken.exists() else source], cwd=self.folder):
            raise DoesNotBuild
        return output

    def _precompiled(self, name):
        """The option that includes a precompiled header with all system and library headers of an object."""
        header = self.folder / "precompiled" / f"{name}.h"
        with self._precompiling:
            if not header.exists():
                own = [pathlib.Path(file) for file in self._files[name] if file.startswith(str(ROOT))]
                includes = {line for file in own for line in file.read_text().splitlines() if line.startswith("#include <")}
                header.parent.mkdir(parents=True, exist_ok=True)
                header.write_text("\n".join(sorted(includes)))
                words = self._compilations[name]
                is_done([*(FAST_COMPILER or words[:1]), *words[1:words.index("-o")], "-w", "-x", "c++-header",
                         "-o", f"{header}.gch", header], cwd=self.folder)
        return ["-include", header]


def header_of(form):
    return f"ui_{pathlib.Path(form).stem}.h"
