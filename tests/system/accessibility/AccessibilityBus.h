#pragma once

#include <QDBusObjectPath>
#include <QObject>
#include <QProcess>
#include <QStringList>
#include <QVector>

class QDBusArgument;
class QDBusMessage;

/**
 * Something on the accessibility bus: a program, a window or a control. Each question goes to the program, by
 * the D-Bus interfaces of AT-SPI; what is gone gives empty answers.
 */
class AccessibleObject
{
public:
    /** Nothing: what a search that failed the test gives. */
    AccessibleObject() = default;

    AccessibleObject(const QString& programsService, const QDBusObjectPath& objectPath)
        : service(programsService)
        , path(objectPath)
    {
    }

    /** The role as AT-SPI spells it, e.g. "push button". */
    QString role() const { return call(Interface, "GetRoleName").toString(); }

    QString name() const { return property("Name").toString(); }

    QString description() const { return property("Description").toString(); }

    /** The names of its actions, e.g. "Press". */
    QStringList actions() const;

    bool isChecked() const { return hasState(Checked); }

    bool isEnabled() const { return hasState(Enabled); }

    /** All inside that has a name or an action, in a screen reader's order; not the choices of a list. */
    QVector<AccessibleObject> controls() const;

    /** Waits for a control; after ten seconds the test fails. */
    AccessibleObject find(const QString& role, const QString& name) const;

    /** Asks for one of its actions, whose effects follow; the test fails if it has no such action. */
    void act(const QString& action) const;

    /** Replaces the text of a field; the test fails if that takes none. */
    void enter(const QString& text) const;

    bool operator==(const AccessibleObject& other) const
    {
        return service == other.service && path == other.path;
    }

private:
    static constexpr char Interface[] = "org.a11y.atspi.Accessible";
    // Numbers of AT-SPI.
    static constexpr int Checked = 4;
    static constexpr int Enabled = 8;

    bool hasState(int state) const;
    QVariant property(const QString& name) const;
    QVariant call(const QString& interface, const QString& method, const QVariantList& arguments = {}) const;

    friend const QDBusArgument& operator>>(const QDBusArgument& argument, AccessibleObject& object);

    QString service;
    QDBusObjectPath path;
};

/**
 * A session bus and its accessibility bus, as a login starts them, and somebody who listens on the latter.
 * Needs a display, and a PrivateProfile before it, for the buses leave files in the account; there is one at
 * a time.
 */
class AccessibilityBus : public QObject
{
    Q_OBJECT

public:
    AccessibilityBus();
    ~AccessibilityBus() override;
    Q_DISABLE_COPY(AccessibilityBus)

    /** Where programs find the session bus: the value of DBUS_SESSION_BUS_ADDRESS. */
    QString sessionAddress() const { return sessionBus; }

    /** Waits for a program to come to the bus; after ten seconds the test fails. */
    AccessibleObject program(const QString& name) const;

    /** From now on, hears what programs tell without being asked. */
    void listen();

    /** The names that a control was given since listen(), in order. */
    QStringList newNames(const AccessibleObject& control) const;

    /** What programs had screen readers say since listen(), in order: notifications shown, and announcements.
     */
    QStringList announcements() const { return announced; }

    /** Of what a control told since listen(), in order: "focus" when it got it, "cursor" when that moved. */
    QStringList movesOf(const AccessibleObject& control) const;

private slots:
    void onPropertyChange(const QDBusMessage& message);
    void onStateChange(const QDBusMessage& message);
    void onCursorMove(const QDBusMessage& message);
    void onAnnouncement(const QDBusMessage& message);

private:
    QProcess daemon;
    QString sessionBus;
    QVector<QPair<AccessibleObject, QString>> renamed;
    QVector<QPair<AccessibleObject, QString>> moves;
    QStringList announced;
};
