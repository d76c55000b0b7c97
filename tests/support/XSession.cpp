#include "XSession.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QThread>

namespace {

QProcessEnvironment EnvironmentFor(const QString &display)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("DISPLAY", display);
    environment.remove("QT_QPA_PLATFORM");
    environment.remove("WAYLAND_DISPLAY");
    return environment;
}

// Runs a helper program against the display; true when it succeeded.
bool Run(const QString &display, const QString &program, const QStringList &arguments,
    QByteArray *output = nullptr)
{
    QProcess process;
    process.setProcessEnvironment(EnvironmentFor(display));
    process.start(program, arguments);
    if (!process.waitForFinished(20000))
        return false;
    if (output)
        *output = process.readAllStandardOutput();
    return process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
}

// xdotool matches titles as POSIX extended expressions, where an escaped
// space means nothing; only the expression's own characters are escaped.
QString ExactTitle(const QString &title)
{
    QString pattern = "^";
    for (const QChar c : title)
        pattern += QString(".^$*+?()[]{}|\\").contains(c) ? QString("\\") + c : QString(c);
    return pattern + "$";
}

// Polls `done` until it holds or the time is up; short pauses in between.
bool Poll(int timeoutMs, const std::function<bool()> &done)
{
    QDeadlineTimer deadline(timeoutMs);
    do {
        if (done())
            return true;
        QThread::msleep(20);
    } while (!deadline.hasExpired());
    return false;
}

} // namespace

XSession::XSession()
{
    // A display number of our own, far from the ones desktops and other
    // suites take first: two servers that share a number, one leaving while
    // the other arrives, can hand clients to the wrong one. Without
    // -noreset the server resets when its last client leaves and refuses
    // the next program meanwhile.
    for (int attempt = 0; attempt < 20 && display_ < 0; ++attempt) {
        const int display
            = 100 + int((QCoreApplication::applicationPid() * 7 + attempt * 131) % 800);
        server_.start("Xvfb",
            {QString(":%1").arg(display), "-displayfd", "1", "-screen", "0", "1024x768x24",
                "-nolisten", "tcp", "-noreset"});
        QByteArray named;
        Poll(20000, [&] {
            server_.waitForReadyRead(100);
            named += server_.readAllStandardOutput();
            return named.contains('\n') || server_.state() != QProcess::Running;
        });
        // On a busy machine it names the display before it answers: wait
        // for a client to get in.
        if (named.trimmed().toInt() == display
            && Poll(20000, [&] { return Run(QString(":%1").arg(display), "xdpyinfo", {}); }))
            display_ = display;
        else if (server_.state() != QProcess::NotRunning) {
            server_.kill();
            server_.waitForFinished();
        }
    }
}

XSession::~XSession()
{
    EndProgram();
    server_.terminate();
    if (!server_.waitForFinished(5000))
        server_.kill();
    server_.waitForFinished();
}

void XSession::EndProgram()
{
    if (program_.state() != QProcess::NotRunning) {
        program_.kill();
        program_.waitForFinished();
    }
}

bool XSession::Launch(const QString &program)
{
    EndProgram();
    program_.setProcessEnvironment(EnvironmentFor(Display()));
    program_.setProcessChannelMode(QProcess::ForwardedChannels);
    program_.start(program, {});
    return program_.waitForStarted(10000);
}

int XSession::WaitForExit(int timeoutMs)
{
    if (!program_.waitForFinished(timeoutMs))
        return -1;
    return program_.exitStatus() == QProcess::NormalExit ? program_.exitCode() : -1;
}

bool XSession::Xdo(const QStringList &arguments, QString *output)
{
    QByteArray bytes;
    const bool ok = Run(Display(), "xdotool", arguments, &bytes);
    if (output)
        *output = QString::fromLocal8Bit(bytes);
    return ok;
}

qulonglong XSession::WaitForWindow(const QString &title, int timeoutMs)
{
    qulonglong window = 0;
    Poll(timeoutMs, [&] {
        QString found;
        Xdo({"search", "--onlyvisible", "--name", ExactTitle(title)}, &found);
        window = found.section('\n', 0, 0).toULongLong();
        return window != 0;
    });
    return window;
}

bool XSession::WaitForNoWindow(const QString &title, int timeoutMs)
{
    return Poll(timeoutMs, [&] {
        QString found;
        Xdo({"search", "--onlyvisible", "--name", ExactTitle(title)}, &found);
        return found.trimmed().isEmpty();
    });
}

QRect XSession::Geometry(qulonglong window)
{
    QString shell;
    Xdo({"getwindowgeometry", "--shell", QString::number(window)}, &shell);
    const auto value = [&shell](const char *key) {
        return shell.section(QString("\n%1=").arg(key), 1).section('\n', 0, 0).toInt();
    };
    shell.prepend('\n');
    return {value("X"), value("Y"), value("WIDTH"), value("HEIGHT")};
}

QImage XSession::Screenshot()
{
    QByteArray png;
    if (!Run(Display(), "import", {"-display", Display(), "-window", "root", "png:-"}, &png))
        return {};
    return QImage::fromData(png, "PNG").convertToFormat(QImage::Format_RGB32);
}

bool XSession::WaitForScreen(const std::function<bool(const QImage &)> &check, int timeoutMs)
{
    QImage shot;
    if (Poll(timeoutMs, [&] { return check(shot = Screenshot()); }))
        return true;
    // What the screen showed instead, for whoever reads the failure.
    const QString kept = QDir::temp().filePath("quorvel-unexpected-screen.png");
    if (shot.save(kept))
        qWarning("The screen did not show what was expected; it is kept in %s", qPrintable(kept));
    return false;
}

// Keys go through the X test extension to the focused window, as a real
// keyboard's would; events sent to a window directly are marked synthetic.
bool XSession::Key(qulonglong window, const QString &keys)
{
    return Xdo({"windowfocus", QString::number(window)})
        && Xdo(QStringList {"key", "--delay", "30"} + keys.split(' ', Qt::SkipEmptyParts));
}

qulonglong XSession::FromFileMenu(
    qulonglong window, const QString &item, const QString &title, int timeoutMs)
{
    for (int attempt = 0; attempt < 5; ++attempt) {
        Key(window, "alt+f");
        Key(window, item);
        if (const qulonglong opened = WaitForWindow(title, timeoutMs))
            return opened;
        Key(window, "Escape Escape");
    }
    return 0;
}

bool XSession::Type(qulonglong window, const QString &text)
{
    return Xdo({"windowfocus", QString::number(window)}) && Xdo({"type", "--delay", "30", text});
}

bool XSession::MouseMove(QPoint screen)
{
    return Xdo({"mousemove", QString::number(screen.x()), QString::number(screen.y())});
}

bool XSession::MouseDown()
{
    return Xdo({"mousedown", "1"});
}

bool XSession::MouseUp()
{
    return Xdo({"mouseup", "1"});
}
