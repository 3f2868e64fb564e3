#include <QCoreApplication>
#include <QtTest>

#include <algorithm>

// A warning of Qt, a misspelt connection for one, fails the test during which it comes. QT_FATAL_WARNINGS
// cannot do this: it knows no exception, and the offscreen platform warns whenever a window or tooltip is
// shown.
namespace {

// The offscreen platform, and a machine without fonts for every script of the world.
constexpr const char* Notices[] = {"This plugin does not support ", "  OpenType support missing for "};

QtMessageHandler testLog = nullptr;

void failOnWarning(QtMsgType type, const QMessageLogContext& context, const QString& message)
{
    if (std::any_of(std::begin(Notices), std::end(Notices),
                    [&message](const char* notice) { return message.startsWith(notice); }))
        return;

    testLog(type, context, message);
    if (type == QtWarningMsg || type == QtCriticalMsg)
        QTest::qFail(qPrintable("Qt warned: " + message), __FILE__, __LINE__);
}

void watchWarnings()
{
    const QtMessageHandler previous = qInstallMessageHandler(failOnWarning);
    if (previous != failOnWarning)
        testLog = previous;
}

} // namespace

Q_COREAPP_STARTUP_FUNCTION(watchWarnings)
