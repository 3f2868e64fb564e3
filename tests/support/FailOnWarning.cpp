#include <QCoreApplication>
#include <QtTest>

#include <algorithm>

// A Qt warning, such as the one for a misspelt connection, fails the running test. QT_FATAL_WARNINGS has no
// exceptions, but the offscreen platform warns whenever a window or tooltip is shown.
namespace {

// Warnings of the offscreen platform, and of a machine without fonts for every script.
constexpr const char* Ignored[] = {"This plugin does not support ", "  OpenType support missing for "};

QtMessageHandler testLog = nullptr;

void failOnWarning(QtMsgType type, const QMessageLogContext& context, const QString& message)
{
    if (std::any_of(std::begin(Ignored), std::end(Ignored),
                    [&message](const char* ignored) { return message.startsWith(ignored); }))
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
