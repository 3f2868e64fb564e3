#include "Registers.h"

#include <QString>
#include <QStringList>

#include <algorithm>

namespace {

// All values of a range, in ascending order.
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

bool Register::hasValue(int value) const
{
    const std::vector<int> values = valuesIn(range);
    return std::binary_search(values.begin(), values.end(), value);
}

int Register::neighbour(int value, int places) const
{
    const std::vector<int> values = valuesIn(range);
    const auto here = std::lower_bound(values.begin(), values.end(), value) - values.begin();
    const auto last = static_cast<std::ptrdiff_t>(values.size()) - 1;
    return values[static_cast<std::size_t>(std::clamp<std::ptrdiff_t>(here + places, 0, last))];
}

const std::vector<Register>& Registers::table()
{
    // Name, sets, steps, inquiry, range, value after power-on, block letter.
    static const std::vector<Register> rows{
        {focusMode, "01 04 38 0p", "01 04 38 10", "09 04 38", "2-3", on},
        {"one-push focus", "01 04 18 01", "", "", "", 0},
        {"focus sensitivity", "01 04 58 0p", "", "09 04 58", "2-3", 2},
        {"focus near limit", "01 04 28 0p 0p 0p 0p", "", "09 04 28", "1000-F000", 0xF000},
        {"white balance mode", "01 04 35 pp", "", "09 04 35", "00-06 20", 0, 'w'},
        {"one-push white balance", "01 04 10 05", "", "", "", 0},
        {"red gain", "01 04 43 00 00 0p 0p", "01 04 03 0s", "09 04 43", "00-FF", 0x80, 'r'},
        {"blue gain", "01 04 44 00 00 0p 0p", "01 04 04 0s", "09 04 44", "00-FF", 0x80, 'b'},
        {"exposure mode", "01 04 39 0p", "", "09 04 39", "0 3 A-B D-E", 0, 'v'},
        {"iris", "01 04 4B 00 00 0p 0p", "01 04 0B 0s", "09 04 4B", "00-11", 0x0E, 'i'},
        {"shutter", "01 04 4A 00 00 0p 0p", "01 04 0A 0s", "09 04 4A", "00-15", 0x06, 's'},
        {"gain", "01 04 4C 00 00 0p 0p", "01 04 0C 0s", "09 04 4C", "00-0F", 0x01, 'g'},
        {"gain limit", "01 04 2C 0p", "", "09 04 2C", "4-F", 0x0F},
        {"bright", "01 04 4D 00 00 0p 0p", "01 04 0D 0s", "09 04 4D", "00-17", 0x0F},
        {backlight, "01 04 33 0p", "", "09 04 33", "2-3", off},
        {exposureCompensation, "01 04 3E 0p", "", "09 04 3E", "2-3", off},
        {"compensation level", "01 04 4E 00 00 0p 0p", "01 04 0E 0s", "09 04 4E", "00-0E", 0x07, 'l'},
        {"aperture", "01 04 42 00 00 0p 0p", "01 04 02 0s", "09 04 42", "00-0F", 0x05, 'p'},
        {mirror, "01 04 61 0p", "", "09 04 61", "2-3", off},
        {flip, "01 04 66 0p", "", "09 04 66", "2-3", off},
        {"freeze", "01 04 62 0p", "", "09 04 62", "2-3", off},
        {"picture effect", "01 04 63 0p", "", "09 04 63", "0 2 4", 0},
        {digitalZoom, "01 04 06 0p", "", "09 04 06", "2-3", off},
        {"menu back", "01 06 06 04", "", "", "", 0},
        {"menu enter", "01 06 06 05", "", "", "", 0},
        {"menu", "01 06 06 0p", "01 06 06 10", "09 06 06", "2-3", off},
        {"remote control receiver", "01 06 08 0p", "01 06 08 10", "09 06 08", "2-3", on},
        {"camera identifier", "01 04 22 0p 0p 0p 0p", "", "09 04 22", "0000-FFFF", 0},
        {"tally", "01 7E 01 0A 00 0p", "", "", "2-3", off},
        {recallSpeed, "01 06 01 pp", "", "", "01-18", 0x18},
    };
    return rows;
}

Registers::Registers()
{
    for (const Register& row : table())
        set(row, row.afterPowerOn);
}
