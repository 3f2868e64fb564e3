#pragma once

#include <QByteArray>

#include <map>
#include <vector>

/** A setting of the camera, such as its white balance, with its frames as in a camera's manual. */
struct Register
{
    const char* name;
    /** The frame, without address and FF, that sets the value p. A frame without p changes nothing. */
    const char* sets;
    /** The frame that changes the value step by step. s is 0 (the value after power-on), 2 (up) or 3 (down).
     * A frame without s toggles between on and off. Empty if there is no such frame. */
    const char* steps;
    /** Empty if there is no inquiry. */
    const char* inquiry;
    /** The valid values, hexadecimal as in the frame: "2-3", "0 3 A-D". */
    const char* range;
    int afterPowerOn;
    /** The letter of the value in the patterns of the block inquiries' answers; 0 if no block has it. */
    char blockLetter = 0;

    /** The pattern of the answer to its inquiry. It has the bytes of `sets` that `inquiry` lacks. */
    QByteArray answer() const { return "x0 50" + QByteArray(sets).mid(QByteArray(inquiry).size()) + " FF"; }

    bool hasValue(int value) const;

    /** The value that is this many places further in the range; at most the last, at least the first. */
    int neighbour(int value, int places) const;
};

/** The values of all registers. */
class Registers
{
public:
    /** The names of the registers that the code of the camera uses. */
    static constexpr char focusMode[] = "focus mode";
    static constexpr char backlight[] = "backlight";
    static constexpr char exposureCompensation[] = "exposure compensation";
    static constexpr char mirror[] = "mirror";
    static constexpr char flip[] = "flip";
    static constexpr char digitalZoom[] = "digital zoom";
    static constexpr char recallSpeed[] = "recall speed";

    /** VISCA's values for on and off, and for automatic and manual. */
    static constexpr int on = 2;
    static constexpr int off = 3;

    /** All registers. To add one, add a row as the camera's manual describes it. */
    static const std::vector<Register>& table();

    /** Sets all registers to their values after power-on. */
    Registers();

    /** The value of the register with this name, which has to be in the table. */
    int value(const QByteArray& name) const { return values.at(name); }

    bool isOn(const QByteArray& name) const { return value(name) == on; }

    void set(const Register& row, int value) { values[row.name] = value; }

private:
    std::map<QByteArray, int> values;
};
