"""Makes breaks of the sources: small changes, each of which a test should notice.

The operators in C++. Headers have constants only, and get only the operators below the line:

    statement    a statement or a case label is removed
    condition    a condition is negated
    ---
    comparison   == becomes !=, < becomes <=, > becomes >=, and the other way round
    logic        && becomes ||, and the other way round
    boolean      true becomes false, and the other way round
    number       a number is increased by one
    text         a letter of a text, or of the name of a signal or slot, is changed
    element      an element of a list of three or more in braces is removed

In a form booleans, numbers and texts are broken in the same way, and

    enumeration  an orientation or a size policy is changed
    name         a widget, layout or action is renamed, unless C++ uses its name: then the compiler notices
    rule         a declaration of a style sheet is removed
    order        an item changes places with the next one
"""

import dataclasses
import difflib
import re


@dataclasses.dataclass(frozen=True)
class Break:
    """One change: the part of a file's text from "begin" to "end" becomes "new"."""
    file: str
    text: str
    operator: str
    begin: int
    end: int
    new: str

    def line(self):
        """The number of the line in which the change begins."""
        return self.text.count("\n", 0, self.begin) + 1

    def broken_text(self):
        return self.text[:self.begin] + self.new + self.text[self.end:]

    def diff(self):
        return "".join(difflib.unified_diff(self.text.splitlines(True), self.broken_text().splitlines(True),
                                            "a/" + self.file, "b/" + self.file, n=2))


TOKEN = re.compile(r"""
    (?P<skipped> //[^\n]* | /\*.*?\*/ | ^[ \t]*\#[^\n]* )
  | (?P<text> "(?:\\.|[^"\\])*" | '(?:\\[^x0]|[^\\])' )
  | (?P<number> \b(?:0x[0-9A-Fa-f]+|\d+)\b | '\\(?:x[0-9A-Fa-f]+|0)' )
  | (?P<word> \w+ )
  | (?P<sign> && | \|\| | [=!<>]= | << | >> | -> | :: | \S )
""", re.VERBOSE | re.DOTALL | re.MULTILINE)

OPPOSITES = [("comparison", "==", "!="), ("comparison", "<", "<="), ("comparison", ">", ">="), ("logic", "&&", "||"),
             ("boolean", "true", "false")]
EXCHANGED = {**{one: (operator, other) for operator, one, other in OPPOSITES},
             **{other: (operator, one) for operator, one, other in OPPOSITES}}

# The statements that can be removed: calls, assignments, jumps, deletions. A declaration begins with two words.
STATEMENT = re.compile(r"(?:emit |new |delete |delete\[\] )?[\w:]+(?:<[\w*]+>)?(?:->|\.|\(|\[|;| = |\+\+)|\+\+|--")


def greater(number):
    """The number plus one, in the same notation; a byte becomes zero after 0xFF."""
    if number.startswith("'"):
        return "'\\x%02X'" % ((int(number[1:-1].lstrip("\\x") or "0", 16) + 1) % 256)
    return "0x%04X" % (int(number, 16) + 1) if number.startswith("0x") else str(int(number) + 1)


def misspelt(text):
    """The text with another last letter or digit; "x" if it has none."""
    places = [place.start() for place in re.finditer(r"(?<!\\)[A-Za-z0-9]", text)]
    if not places:
        return "x"
    at = places[-1]
    return text[:at] + {"z": "y", "Z": "Y", "9": "8"}.get(text[at], chr(ord(text[at]) + 1)) + text[at + 1:]


def end_of(tokens, at, signs):
    """The index of the first of the signs outside of brackets, from an index on; None if a closing bracket comes first."""
    depth = 0
    while depth >= 0:
        if tokens[at][0] in signs and depth == 0:
            return at
        depth += (tokens[at][0] in "([{") - (tokens[at][0] in ")]}")
        at += 1
    return None


def token_breaks(text, tokens):
    for token, following in zip(tokens, tokens[1:]):
        begin, end, old = token.start(), token.end(), token[0]
        # "<" and "&&" without blanks around them are part of a type.
        if old in EXCHANGED and (token.lastgroup == "word" or text[begin - 1] == text[end] == " "):
            operator, new = EXCHANGED[old]
            yield operator, begin, end, new
        elif token.lastgroup == "number":
            yield "number", begin, end, greater(old)
        elif token.lastgroup == "text":
            yield "text", begin, end, old[0] + misspelt(old[1:-1]) + old[-1]
        elif old in ("SIGNAL", "SLOT"):
            name = text[following.end():text.index("(", following.end())]
            yield "text", following.end(), following.end() + len(name), misspelt(name)


def element_breaks(text, tokens):
    for at, token in enumerate(tokens):
        signs = [at]
        while token[0] == "{" and tokens[signs[-1]][0] not in ("}", ";"):
            signs.append(end_of(tokens, signs[-1] + 1, [",", "}", ";"]))
        # Two elements are a pair and no list.
        if tokens[signs[-1]][0] == "}" and len(signs) > 3:
            # The first element goes with the comma after it, each other one with the comma before it.
            yield "element", tokens[at + 1].start(), tokens[signs[1] + 1].start(), ""
            for comma, sign in zip(signs[1:], signs[2:]):
                yield "element", tokens[comma].start(), tokens[sign].start(), ""


def condition_breaks(text, tokens):
    for at, token in enumerate(tokens):
        if token[0] in ("if", "while"):
            condition = tokens[at + 2:end_of(tokens, at + 2, [")"])]
        elif token[0] == "?" and tokens[at - 2][0] in ("=", "(", "return"):
            condition = [tokens[at - 1]]
        else:
            continue
        signs = {each[0] for each in condition}
        begin, end = condition[0].start(), condition[-1].end()
        # A declaration cannot be negated, and a single comparison has an operator of its own.
        if "=" in signs or signs & {"==", "!="} and not signs & {"&&", "||"}:
            continue
        if condition[0][0] == "!" and not signs & {"&&", "||"}:
            yield "condition", begin, end, text[begin + 1:end]
        else:
            yield "condition", begin, end, f"!({text[begin:end]})"


def statement_breaks(text, tokens):
    head_end = -1
    is_label = begins = False
    for at, token in enumerate(tokens):
        is_indented = text[text.rfind("\n", 0, token.start()) + 1] == " "
        if token[0] in ("if", "for", "while", "switch"):
            head_end = end_of(tokens, at + 2, [")"])
        elif token[0] == "case":
            yield "statement", token.start(), tokens[end_of(tokens, at, [":"])].end(), ""
        elif begins and is_indented and STATEMENT.match(text, token.start()):
            last = end_of(tokens, at, [";"])
            if last:
                yield "statement", token.start(), tokens[last].end(), ";"
        begins = at == head_end or at > head_end and (token[0] in (";", "{", "}", "else") or
                                                      is_label and token[0] == ":")
        is_label = token[0] in ("case", "default") or is_label and token[0] != ":"


def cpp_breaks(text, is_header):
    tokens = [token for token in TOKEN.finditer(text) if token.lastgroup != "skipped"]
    yield from token_breaks(text, tokens)
    yield from element_breaks(text, tokens)
    if not is_header:
        yield from condition_breaks(text, tokens)
        yield from statement_breaks(text, tokens)


# An item and the next one of the same layout.
TWO_ITEMS = re.compile(r"^(?=(( *)<item>\n(?:(?!\2</item>).*\n)*\2</item>\n)(\2<item>\n(?:(?!\2</item>).*\n)*\2</item>\n))",
                       re.MULTILINE)


def form_breaks(text, cpp_names):
    for match in re.finditer(r'(?<=[>"])\d+(?=[<"])', text):
        yield "number", *match.span(), greater(match[0])
    for match in re.finditer(r"(?<=<bool>)\w+", text):
        yield "boolean", *match.span(), EXCHANGED[match[0]][1]
    for match in re.finditer(r"(?<=<string>)[^<]+", text):
        yield "text", *match.span(), misspelt(match[0])
    for match in re.finditer(r'Horizontal(?=</enum>)|(?<=sizetype=")\w+', text):
        yield "enumeration", *match.span(), "Vertical" if match[0] == "Horizontal" else "Ignored"
    for match in re.finditer(r'<(?:widget|layout|action)\b.* name="(\w+)"', text):
        if match[1] not in cpp_names:
            yield "name", *match.span(1), misspelt(match[1])
    for match in re.finditer(r"^ +[\w-]+ *:[^;\n]*;\n", text, re.MULTILINE):
        yield "rule", *match.span(), ""
    for match in TWO_ITEMS.finditer(text):
        yield "order", match.start(1), match.end(3), match[3] + match[1]


def breaks_of(sources):
    """All breaks of the sources, a dictionary of texts by file name, in their order."""
    cpp_names = set(re.findall(r"\w+", " ".join(text for file, text in sources.items() if not file.endswith(".ui"))))
    breaks = []
    for file, text in sources.items():
        made = form_breaks(text, cpp_names) if file.endswith(".ui") else cpp_breaks(text, file.endswith(".h"))
        breaks += sorted((Break(file, text, *each) for each in made), key=lambda each: each.begin)
    return breaks


@dataclasses.dataclass(frozen=True)
class Exemption:
    """An entry of the list of breaks that cannot be noticed: all breaks of a line, or those with certain results."""
    file: str
    lines: list
    place: int  # the index of the line in "lines"
    broken_lines: list
    reason: str

    def covers(self, each):
        """Whether a break begins in the line, with the others around it."""
        at = each.line() - 1
        lines = [line.strip() for line in each.text.splitlines()[at - self.place:at - self.place + len(self.lines)]]
        return (self.file == each.file and lines == self.lines and
                (not self.broken_lines or each.broken_text().splitlines()[at].strip() in self.broken_lines))


def read_exemptions(text):
    """The entries of the list, which has an empty line between any two.

    Each has its file; as in a diff the line ("-"), those around it (" ") and what it becomes ("+"); and a reason.
    """
    exemptions = []
    for block in text.split("\n\n"):
        lines = [line for line in block.splitlines() if not line.startswith("#")]
        if lines:
            around = [line for line in lines if line[0] in " -"]
            broken_lines = [line[1:].strip() for line in lines if line[0] == "+"]
            exemptions.append(Exemption(lines[0], [line[1:].strip() for line in around],
                                        next(at for at, line in enumerate(around) if line[0] == "-"), broken_lines,
                                        " ".join(lines[1 + len(around) + len(broken_lines):])))
    return exemptions


def exempted(breaks, exemptions):
    """The breaks that the list exempts. An entry must fit exactly one line and have a reason; otherwise a ValueError."""
    covered = []
    for each in exemptions:
        fitting = [broken for broken in breaks if each.covers(broken)]
        places = {broken.line() for broken in fitting}
        if len(places) != 1 or len(fitting) < len(each.broken_lines) or not each.reason:
            raise ValueError(f"{len(places)} lines have the breaks of this entry of the list: {each}")
        covered += fitting
    return covered
