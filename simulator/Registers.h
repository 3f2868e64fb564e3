#pragma once

#include <QByteArray>

#include <map>
#include <vector>

/** Something that the camera's picture is set to, as a camera's manual describes it. */
struct Register
{
    const char* name;
    /** The frame, without address and FF, that sets the value p. One without p changes nothing. */
    const char* sets;
    /** Steps from the value: s is 0 back to that after power-on, 2 up, 3 down. A frame without s goes over
       between on and off. Empty where the camera has none, as is the inquiry. */
    const char* steps;
    const char* inquiry;
    /** The values there are, hexadecimal as in the frame: "2-3", "0 3 A-D". */
    const char* range;
    int afterPowerOn;
    /** Stands for the value in the answers to block inquiries. */
    char blockLetter = 0;

    /** The pattern of the answer to its inquiry: what the frame that sets it has beyond the inquiry. */
    QByteArray answer() const { return "x0 50" + QByteArray(sets).mid(QByteArray(inquiry).size()) + " FF"; }

    bool hasValue(int value) const;

    /** The value so many places further on in the range; beyond its ends the first or the last. */
    int neighbour(int value, int places) const;
};

/** The values of all registers. */
class Registers
{
public:
    /** Those that the camera itself looks at. */
    static constexpr char focusMode[] = "focus mode";
    static constexpr char backlight[] = "backlight";
    static constexpr char exposureCompensation[] = "exposure compensation";
    static constexpr char mirror[] = "mirror";
    static constexpr char flip[] = "flip";
    static constexpr char digitalZoom[] = "digital zoom";
    static constexpr char recallSpeed[] = "recall speed";

    /** VISCA's values for what can be on or off, or automatic or manual. */
    static constexpr int on = 2;
    static constexpr int off = 3;

    /** Every register. Whoever knows a camera's manual can add a row. */
    static const std::vector<Register>& table();

    /** All values are those after power-on. */
    Registers();

    /** Of one of the names above; with any other the program ends. */
    int value(const QByteArray& name) const { return values.at(name); }

    bool isOn(const QByteArray& name) const { return value(name) == on; }

    void set(const Register& row, int value) { values[row.name] = value; }

private:
    std::map<QByteArray, int> values;
};
