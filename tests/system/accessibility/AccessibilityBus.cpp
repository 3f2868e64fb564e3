#include "AccessibilityBus.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusReply>
#include <QDBusVariant>
#include <QtTest>

#include <algorithm>

namespace {

constexpr char SessionConnection[] = "session";
constexpr char BusConnection[] = "accessibility";

constexpr char RegistryService[] = "org.a11y.atspi.Registry";
constexpr char ActionInterface[] = "org.a11y.atspi.Action";
constexpr char EventInterface[] = "org.a11y.atspi.Event.Object";

// Starting a program on a busy machine takes a while.
constexpr int PatienceMs = 10000;

struct Action
{
    QString name;
    QString description;
    QString keys;
};

const QDBusArgument& operator>>(const QDBusArgument& argument, Action& action)
{
    argument.beginStructure();
    argument >> action.name >> action.description >> action.keys;
    argument.endStructure();
    return argument;
}

/** The elements of an array in an answer; none if there is no answer. */
template <class Element> QVector<Element> elementsOf(const QVariant& answer)
{
    QVector<Element> elements;
    if (answer.isValid())
        answer.value<QDBusArgument>() >> elements;
    return elements;
}

AccessibleObject senderOf(const QDBusMessage& message)
{
    return {message.service(), QDBusObjectPath(message.path())};
}

/** What a control has reported. */
QStringList told(const QVector<QPair<AccessibleObject, QString>>& all, const AccessibleObject& control)
{
    QStringList ofControl;
    for (const auto& [object, text] : all) {
        if (object == control)
            ofControl.append(text);
    }
    return ofControl;
}

/** Sends a call to the accessibility bus and waits for the answer's first argument. */
QVariant ask(const QDBusMessage& question)
{
    const QDBusMessage answer = QDBusConnection(BusConnection).call(question);
    return answer.type() == QDBusMessage::ReplyMessage ? answer.arguments().value(0) : QVariant();
}

} // namespace

const QDBusArgument& operator>>(const QDBusArgument& argument, AccessibleObject& object)
{
    argument.beginStructure();
    argument >> object.service >> object.path;
    argument.endStructure();
    return argument;
}

QStringList AccessibleObject::actions() const
{
    QStringList names;
    const auto actions = elementsOf<Action>(call(ActionInterface, "GetActions"));
    for (const Action& action : actions)
        names.append(action.name);
    return names;
}

QVector<AccessibleObject> AccessibleObject::controls() const
{
    QVector<AccessibleObject> found;
    const auto parts = elementsOf<AccessibleObject>(call(Interface, "GetChildren"));
    for (const AccessibleObject& part : parts) {
        if (!part.name().isEmpty() || !part.actions().isEmpty())
            found.append(part);
        if (part.role() != "combo box")
            found += part.controls();
    }
    return found;
}

AccessibleObject AccessibleObject::find(const QString& role, const QString& name) const
{
    AccessibleObject found;
    const bool isFound = QTest::qWaitFor(
        [&] {
            const auto candidates = controls();
            const auto match = std::find_if(candidates.begin(), candidates.end(), [&](const auto& candidate) {
                return candidate.name() == name && candidate.role() == role;
            });
            if (match == candidates.end())
                return false;
            found = *match;
            return true;
        },
        PatienceMs);
    if (!isFound)
        QTest::qFail(qPrintable("there is no " + role + ' ' + name), __FILE__, __LINE__);
    return found;
}

void AccessibleObject::act(const QString& action) const
{
    const int index = static_cast<int>(actions().indexOf(action));
    if (!call(ActionInterface, "DoAction", {index}).toBool())
        QTest::qFail(qPrintable(name() + " does not " + action), __FILE__, __LINE__);
}

void AccessibleObject::enter(const QString& text) const
{
    if (!call("org.a11y.atspi.EditableText", "SetTextContents", {text}).toBool())
        QTest::qFail(qPrintable(name() + " takes no text"), __FILE__, __LINE__);
}

bool AccessibleObject::hasState(int state) const
{
    const auto words = elementsOf<unsigned>(call(Interface, "GetState"));
    return (words.value(0) & (1U << state)) != 0;
}

QVariant AccessibleObject::property(const QString& name) const
{
    return call("org.freedesktop.DBus.Properties", "Get", {Interface, name}).value<QDBusVariant>().variant();
}

QVariant AccessibleObject::call(const QString& interface, const QString& method,
                                const QVariantList& arguments) const
{
    QDBusMessage question = QDBusMessage::createMethodCall(service, path.path(), interface, method);
    question.setArguments(arguments);
    return ask(question);
}

AccessibilityBus::AccessibilityBus()
{
    daemon.start("dbus-daemon", {"--session", "--nofork", "--print-address"});
    while (!daemon.canReadLine() && daemon.waitForReadyRead(PatienceMs)) {
    }
    sessionBus = QString::fromLocal8Bit(daemon.readLine()).trimmed();

    // The first call starts the accessibility bus.
    const QDBusReply<QString> address =
        QDBusConnection::connectToBus(sessionBus, SessionConnection)
            .call(QDBusMessage::createMethodCall("org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus",
                                                 "GetAddress"));
    QDBusConnection::disconnectFromBus(SessionConnection);
    if (!address.isValid())
        qFatal("there is no accessibility bus: %s", qPrintable(address.error().message()));
    QDBusConnection::connectToBus(address, BusConnection);
}

AccessibilityBus::~AccessibilityBus()
{
    QDBusConnection::disconnectFromBus(BusConnection);
    daemon.terminate();
    daemon.waitForFinished();
}

AccessibleObject AccessibilityBus::program(const QString& name) const
{
    const AccessibleObject desktop(RegistryService, QDBusObjectPath("/org/a11y/atspi/accessible/root"));
    return desktop.find("application", name);
}

void AccessibilityBus::listen()
{
    QDBusConnection bus(BusConnection);
    bus.connect({}, {}, EventInterface, "PropertyChange", this, SLOT(onPropertyChange(QDBusMessage)));
    bus.connect({}, {}, EventInterface, "StateChanged", this, SLOT(onStateChange(QDBusMessage)));
    bus.connect({}, {}, EventInterface, "TextCaretMoved", this, SLOT(onCursorMove(QDBusMessage)));
    bus.connect({}, {}, EventInterface, "Announcement", this, SLOT(onAnnouncement(QDBusMessage)));
    // Programs send only the events that somebody has registered for.
    for (const char* event :
         {"object:property-change:accessible-name", "object:state-changed:focused",
          "object:state-changed:showing", "object:text-caret-moved", "object:announcement"}) {
        auto wish = QDBusMessage::createMethodCall(RegistryService, "/org/a11y/atspi/registry",
                                                   RegistryService, "RegisterEvent");
        wish << event;
        ask(wish);
    }
}

QStringList AccessibilityBus::newNames(const AccessibleObject& control) const
{
    return told(renamed, control);
}

QStringList AccessibilityBus::movesOf(const AccessibleObject& control) const
{
    return told(moves, control);
}

void AccessibilityBus::onPropertyChange(const QDBusMessage& message)
{
    if (message.arguments().value(0) != "accessible-name")
        return;
    // Not every version of Qt sends the name along.
    const AccessibleObject object = senderOf(message);
    renamed.append({object, object.name()});
}

void AccessibilityBus::onStateChange(const QDBusMessage& message)
{
    if (message.arguments().value(1).toInt() != 1)
        return;
    const AccessibleObject object = senderOf(message);
    const QString state = message.arguments().value(0).toString();
    if (state == "focused")
        moves.append({object, "focus"});
    if (state == "showing" && object.role() == "notification")
        announced.append(object.name());
}

void AccessibilityBus::onCursorMove(const QDBusMessage& message)
{
    moves.append({senderOf(message), "cursor"});
}

void AccessibilityBus::onAnnouncement(const QDBusMessage& message)
{
    announced.append(message.arguments().value(3).value<QDBusVariant>().variant().toString());
}
