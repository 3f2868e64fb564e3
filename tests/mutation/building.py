"""Builds the program and its tests once, and again those parts of them that a break changes."""

import json
import os
import pathlib
import shlex
import shutil
import subprocess
import threading

HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parents[1]

# The program without its main(), of which the program itself and every test take theirs.
LIBRARY = "libvantrel_program.so"

# Three times as fast as the usual one.
FAST_LINKER = next((f"-fuse-ld={name}" for name in ("lld", "gold") if shutil.which(f"ld.{name}")), "")

# With what is precompiled it takes less than half of GCC's time, and its objects fit GCC's.
FAST_COMPILER = [name, "-fpch-instantiate-templates"] if (name := shutil.which("clang++")) else []


class RunStops(Exception):
    """Why the whole run cannot go on."""


class DoesNotBuild(Exception):
    """A break that the compiler refuses, or whose code is that of the unbroken program."""


def is_done(command, **options):
    return subprocess.run(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, **options).returncode == 0


def output_of(*command, **options):
    return subprocess.run(command, check=True, stdout=subprocess.PIPE, text=True, **options).stdout


def program_of(test):
    return f"tests/{test}"


class Build:
    """The program, as a shared library, and the tests, in a folder. What is built is named as within the folder."""

    def __init__(self, folder, tests):
        self.folder = folder
        subprocess.run(
            ["cmake", "-S", ROOT, "-B", folder, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Debug",
             "-DCMAKE_CXX_FLAGS_DEBUG=-O0", f"-DCMAKE_PROJECT_INCLUDE={HERE / 'program-as-library.cmake'}",
             # Which library a test takes is said when it is run.
             "-DCMAKE_SKIP_BUILD_RPATH=ON",
             # A test of a form alone names nothing of the library, and needs its images.
             # And what a break leaks shows at the end of each program.
             f"-DCMAKE_EXE_LINKER_FLAGS=-Wl,--no-as-needed -fsanitize=leak {FAST_LINKER}",
             f"-DCMAKE_SHARED_LINKER_FLAGS={FAST_LINKER}"], check=True, stdout=subprocess.DEVNULL)
        if not is_done(["cmake", "--build", folder, "--target", *tests]):
            raise RunStops(f"the program does not build as it is: cmake --build {folder}")

        entries = json.loads((folder / "compile_commands.json").read_text())
        commands = [shlex.split(entry["command"]) for entry in entries]
        self._compilations = {words[words.index("-o") + 1]: words for words in commands}
        self._links = {product: self._last_command(product) for product in [LIBRARY, *map(program_of, tests)]}
        self._files = {}
        for paragraph in output_of("ninja", "-C", folder, "-t", "deps").split("\n\n"):
            name, *files = paragraph.split("\n")
            self._files[name.split(":")[0]] = {os.path.join(folder, file.strip()) for file in files}
        self._precompiling = threading.Lock()

    def _last_command(self, product):
        """The words of the command that makes a product, without what the shell does around it."""
        line = output_of("ninja", "-C", self.folder, "-t", "commands", product).splitlines()[-1]
        return next(shlex.split(part) for part in line.split(" && ") if not part.startswith((":", "cd ")))

    def objects_of(self, product, file):
        """Those objects of a product that are made of a file of the sources, or of the header of a form."""
        made_of = str(self.folder / header_of(file) if file.endswith(".ui") else ROOT / file)
        return [word for word in self._links[product] if made_of in self._files.get(word, ())]

    def generate(self, form, folder):
        """Makes the header of a form that stands in the folder."""
        header = header_of(form)
        words = self._last_command(header)
        words[words.index("-o") + 1:] = [folder / header, folder / form]
        if not is_done(words) or (folder / header).read_bytes() == (self.folder / header).read_bytes():
            raise DoesNotBuild

    def link(self, product, objects, folder, options=()):
        """Links a product in a folder, from some objects that are compiled again, and returns its path.

        Sources that stand in the folder are taken in place of the original ones.
        """
        words = [self._compile(word, folder, options) if word in objects else word for word in self._links[product]]
        words[words.index("-o") + 1] = folder / product
        (folder / product).parent.mkdir(exist_ok=True)
        if not is_done([*words, *options], cwd=self.folder):
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
        """The option that takes in, precompiled, all headers of others that an object includes."""
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
