#!/usr/bin/env python3
"""Tests breaks.py on tiny sources, and how it reads the list of unnoticeable breaks."""

import sys
import unittest

sys.dont_write_bytecode = True
from breaks import breaks_of, exempted, read_exemptions

CPP = r"""
#include <one1.h>

constexpr int Limit = 7; // and "no" 8 == 9
constexpr char Mark = '\xFF', Comma = ',';

bool Window::press(int key)
{
    /* if (never) send(1); */
    if (!isOpen)
        return;
    QString name = "Up\n";
    for (const int byte : {key, other(key, code), 'x'})
        port->write(byte);
    connect(button, SIGNAL(clicked(bool)), this, SLOT(onPress()));
    switch (key) {
    case Enter:
        isOpen = key <= 0x0F && QList<bool>().isEmpty();
    }
    return isOpen ? key == code : true;
}
"""

CPP_BREAKS = [
    (4, "number", "7", "8"),
    (5, "number", r"'\xFF'", r"'\x00'"),
    (5, "text", "','", "'x'"),
    (10, "condition", "!isOpen", "isOpen"),
    (11, "statement", "return;", ";"),
    (12, "text", r'"Up\n"', r'"Uq\n"'),
    (13, "element", "key, ", ""),
    (13, "element", ", other(key, code)", ""),
    (13, "element", ", 'x'", ""),
    (13, "text", "'x'", "'y'"),
    (14, "statement", "port->write(byte);", ";"),
    (15, "statement", "connect(button, SIGNAL(clicked(bool)), this, SLOT(onPress()));", ";"),
    (15, "text", "clicked", "clickee"),
    (15, "text", "onPress", "onPrest"),
    (17, "statement", "case Enter:", ""),
    (18, "statement", "isOpen = key <= 0x0F && QList<bool>().isEmpty();", ";"),
    (18, "comparison", "<=", "<"),
    (18, "number", "0x0F", "0x0010"),
    (18, "logic", "&&", "||"),
    (20, "condition", "isOpen", "!(isOpen)"),
    (20, "comparison", "==", "!="),
    (20, "boolean", "true", "false"),
]

HEADER = """
constexpr int Limit = 64;
inline void open() { if (!isOpen) start(); }
bool isOpen = false;
"""

HEADER_BREAKS = [(2, "number", "64", "65"), (4, "boolean", "false", "true")]

FORM = """
<widget class="QSlider" name="slider">
 <property name="maximum"><number>18</number></property>
 <property name="orientation"><enum>Qt::Horizontal</enum></property>
 <property name="enabled"><bool>true</bool></property>
 <layout class="QVBoxLayout" name="rows">
  <item>
   <string>Up</string>
  </item>
  <item>
   <string notr="true">QLabel
{
    color : white;
}</string>
  </item>
 </layout>
</widget>
"""

FORM_BREAKS = [
    (3, "number", "18", "19"),
    (4, "enumeration", "Horizontal", "Vertical"),
    (5, "boolean", "true", "false"),
    (6, "name", "rows", "rowt"),
    (7, "order", FORM[FORM.index("  <item>"):FORM.index(" </layout>")],
     FORM[FORM.rindex("  <item>"):FORM.index(" </layout>")] + FORM[FORM.index("  <item>"):FORM.rindex("  <item>")]),
    (8, "text", "Up", "Uq"),
    (13, "rule", "    color : white;\n", ""),
]

TWO_CONDITIONS = """
void Window::open()
{
    if (isOpen && isIdle)
        return;
}

void Window::close()
{
    if (isOpen && isIdle)
        return;
}
"""


def made(sources):
    return [(each.line(), each.operator, each.text[each.begin:each.end], each.new) for each in breaks_of(sources)]


class BreaksTest(unittest.TestCase):
    maxDiff = None

    def test_cpp_is_broken_outside_of_comments_and_declarations(self):
        self.assertCountEqual(made({"window.cpp": CPP}), CPP_BREAKS)

    def test_a_header_is_broken_in_its_constants(self):
        self.assertCountEqual(made({"window.h": HEADER}), HEADER_BREAKS)

    def test_a_form_is_broken_except_in_the_names_that_cpp_uses(self):
        self.assertCountEqual(made({"window.cpp": "ui->slider;", "window.ui": FORM}), FORM_BREAKS)

    def test_a_break_is_shown_as_a_diff(self):
        form_break = breaks_of({"window.ui": "<number>18</number>\n"})[0]
        self.assertEqual(form_break.diff(), "--- a/window.ui\n+++ b/window.ui\n@@ -1 +1 @@\n"
                                            "-<number>18</number>\n+<number>19</number>\n")


class ExemptionTest(unittest.TestCase):
    @staticmethod
    def exempted(*entry):
        breaks = breaks_of({"window.cpp": TWO_CONDITIONS})
        covered = exempted(breaks, read_exemptions("# A list.\n\nwindow.cpp\n" + "\n".join(entry)))
        return [(each.line(), each.operator) for each in covered]

    def test_an_entry_exempts_every_break_of_a_line(self):
        self.assertEqual(self.exempted(" void Window::close()", " {", "-if (isOpen && isIdle)", " return;", "Why."),
                         [(10, "condition"), (10, "logic")])

    def test_an_entry_exempts_the_breaks_that_make_a_certain_line(self):
        self.assertEqual(self.exempted(" void Window::close()", " {", "-if (isOpen && isIdle)", "+if (isOpen || isIdle)",
                                       "Why."), [(10, "logic")])

    def test_an_entry_whose_line_is_gone_stops_the_run(self):
        with self.assertRaisesRegex(ValueError, "^0 lines"):
            self.exempted("-if (isClosed)", "Why.")

    def test_an_entry_whose_break_is_not_made_stops_the_run(self):
        with self.assertRaisesRegex(ValueError, "^0 lines"):
            self.exempted(" void Window::close()", " {", "-if (isOpen && isIdle)", "+if (isClosed)", "Why.")

    def test_an_entry_that_fits_two_lines_stops_the_run(self):
        with self.assertRaisesRegex(ValueError, "^2 lines"):
            self.exempted("-if (isOpen && isIdle)", "Why.")

    def test_an_entry_without_a_reason_stops_the_run(self):
        with self.assertRaisesRegex(ValueError, "reason=''"):
            self.exempted(" void Window::close()", " {", "-if (isOpen && isIdle)")


if __name__ == "__main__":
    unittest.main()
