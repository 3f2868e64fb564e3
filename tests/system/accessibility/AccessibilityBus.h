#pragma once

#include <QDBusObjectPath>
#include <QObject>
#include <QProcess>
#include <QStringList>
#include <QVector>

class QDBusArgument;
class QDBusMessage;

/**
 * A program, a window or a control on the accessibility bus. Each call asks the program over the D-Bus
 * interfaces of AT-SPI; an object that is gone gives empty answers.
 */
class AccessibleObject
{
public:
    /** No object: the result of a search that has failed. */
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

    /** Everything inside with a name or an action, in a screen reader's order; not the choices of a list. */
    QVector<AccessibleObject> controls() const;

    /** Waits for a control; after ten seconds the test fails. */
    AccessibleObject find(const QString& role, const QString& name) const;

    /** Starts one of its actions and does not wait for the effects; the test fails if there is no such
     * action. */
    void act(const QString& action) const;

    /** Replaces the text of a field; the test fails if it takes no text. */
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
 * A session bus and its accessibility bus, as a login starts them, and a listener on the latter. Needs a
 * display, and a PrivateProfile made before it, since the buses leave files in the account. There may be one
 * at a time.
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

    /** From now on, records the events that programs send. */
    void listen();

    /** The names that a control has got since listen(), in order. */
    QStringList newNames(const AccessibleObject& control) const;

    /** What screen readers were to say since listen(), in order: notifications shown, and announcements. */
    QStringList announcements() const { return announced; }

    /** What a control has reported since listen(), in order: "focus" for getting it, "cursor" for its moves.
     */
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
