#include "Registers.h"

#include <QString>
#include <QStringList>

#include <algorithm>

namespace {

// Where the parameters begin in a form, after three bytes.
constexpr int parametersAt = 9;

// Every value in a range, in order.
std::vector<int> valuesIn(const char* range)
{
    std::vector<int> values;
    const QStringList spans = QString(range).split(' ');
    for (const QString& span : spans) {
        const QStringList ends = span.split('-');
        const int last = ends.constLast().toInt(nullptr, 16);
        for (int value = ends.constFirst().toInt(nullptr, 16); value <= last; ++value)
            values.push_back(value);
    }
    return values;
}

} // namespace

const std::vector<Registers::Line>& Registers::table()
{
    // Name, what sets it, what steps it, its inquiry, its range, its value after power-on.
    static const std::vector<Line> lines{
        {"focus mode", "01 04 38 0p", "01 04 38 10", "09 04 38", "2-3", 2},
        {"one-push focus", "01 04 18 01", "", "", "", 0},
        {"white balance mode", "01 04 35 0p", "", "09 04 35", "0-5", 0},
        {"one-push white balance", "01 04 10 05", "", "", "", 0},
        {"red gain", "01 04 43 00 00 0p 0p", "01 04 03 0s", "09 04 43", "00-FF", 0x80},
        {"blue gain", "01 04 44 00 00 0p 0p", "01 04 04 0s", "09 04 44", "00-FF", 0x80},
        {"exposure mode", "01 04 39 0p", "", "09 04 39", "0 3 A-B D-E", 0},
        {"iris", "01 04 4B 00 00 0p 0p", "01 04 0B 0s", "09 04 4B", "00-11", 0x0E},
        {"shutter", "01 04 4A 00 00 0p 0p", "01 04 0A 0s", "09 04 4A", "00-15", 0x06},
        {"gain", "01 04 4C 00 00 0p 0p", "01 04 0C 0s", "09 04 4C", "00-0F", 0x01},
        {"backlight", "01 04 33 0p", "", "09 04 33", "2-3", 3},
        {"exposure compensation", "01 04 3E 0p", "", "09 04 3E", "2-3", 3},
        {"compensation level", "01 04 4E 00 00 0p 0p", "01 04 0E 0s", "09 04 4E", "00-0E", 0x07},
        {"aperture", "01 04 42 00 00 0p 0p", "01 04 02 0s", "09 04 42", "00-0F", 0x05},
        {"mirror", "01 04 61 0p", "", "09 04 61", "2-3", 3},
        {"flip", "01 04 66 0p", "", "09 04 66", "2-3", 3},
        {"digital zoom", "01 04 06 0p", "", "09 04 06", "2-3", 3},
        {"menu", "01 06 06 0p", "", "09 06 06", "2-3", 3},
    };
    return lines;
}

QByteArray Registers::frame(const char* form)
{
    return QByteArray("8x ") + form + " FF";
}

QByteArray Registers::answer(const Line& line)
{
    return QByteArray("x0 50 ") + (line.sets + parametersAt) + " FF";
}

bool Registers::hasValue(const Line& line, int value)
{
    const std::vector<int> values = valuesIn(line.range);
    return std::find(values.begin(), values.end(), value) != values.end();
}

Registers::Registers()
{
    for (const Line& line : table())
        reset(line);
}

void Registers::stepUp(const Line& line)
{
    if (value(line.name) != valuesIn(line.range).back())
        toggle(line);
}

void Registers::stepDown(const Line& line)
{
    const std::vector<int> all = valuesIn(line.range);
    const auto here = std::find(all.begin(), all.end(), value(line.name));
    if (here != all.begin())
        set(line, *std::prev(here));
}

void Registers::toggle(const Line& line)
{
    const std::vector<int> all = valuesIn(line.range);
    const auto here = std::find(all.begin(), all.end(), value(line.name));
    set(line, std::next(here) == all.end() ? all.front() : *std::next(here));
}
