#pragma once

#include <QByteArray>
#include <QMap>

#include <vector>

/**
 * What the camera remembers about its picture: values that commands set or change and inquiries give back.
 */
class Registers
{
public:
    /**
     * A line of the table, as a camera's manual describes a register. The forms are frames without address
     * and FF, empty where the camera has none.
     */
    struct Line
    {
        const char* name;
        /** Sets the value p; the inquiry is answered by what stands after the first three bytes. A form
           without p changes nothing. */
        const char* sets;
        /** Steps from the value: s is 0 back to that after power-on, 2 up, 3 down. A form without s goes over
           to the next value, and from the last to the first. */
        const char* steps;
        const char* inquiry;
        /** The values there are, hexadecimal as in the form: "2-3", "0 3 A-D". */
        const char* range;
        int afterPowerOn;
    };

    /** Every register. Whoever knows a camera's manual can add a line. */
    static const std::vector<Line>& table();

    /** One of its forms as a pattern for the whole frame. */
    static QByteArray frame(const char* form);

    /** The pattern of the answer to its inquiry, for the camera's address + 8 as x and the value as p. */
    static QByteArray answer(const Line& line);

    /** Whether the range has that value. */
    static bool hasValue(const Line& line, int value);

    /** All values are those after power-on. */
    Registers();

    int value(const char* name) const { return values[name]; }

    void set(const Line& line, int value) { values[line.name] = value; }

    void reset(const Line& line) { set(line, line.afterPowerOn); }

    /** To the next value of the range; stays at the last. */
    void stepUp(const Line& line);

    /** To the one before; stays at the first. */
    void stepDown(const Line& line);

    /** To the next value of the range, and from the last to the first. */
    void toggle(const Line& line);

private:
    QMap<QByteArray, int> values;
};
