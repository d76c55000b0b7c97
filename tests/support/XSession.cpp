#include "XSession.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QThread>

namespace {

QProcessEnvironment EnvironmentFor(const QString &display)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("DISPLAY"), display);
    environment.remove(QStringLiteral("QT_QPA_PLATFORM"));
    environment.remove(QStringLiteral("WAYLAND_DISPLAY"));
    return environment;
}

// xdotool matches titles as POSIX extended expressions, where an escaped
// space means nothing; only the expression's own characters are escaped.
QString ExactTitle(const QString &title)
{
    QString pattern = QStringLiteral("^");
    for (const QChar c : title) {
        if (QStringLiteral(".^$*+?()[]{}|\\").contains(c))
            pattern += QLatin1Char('\\');
        pattern += c;
    }
    return pattern + QLatin1Char('$');
}

// Short pauses while polling; the bound is always the caller's deadline.
void Pause()
{
    QThread::msleep(20);
}

} // namespace

XSession::XSession()
{
    // The server picks a free display itself and names it on its output once
    // it accepts connections, so nothing is started before it is ready.
    server_.start(QStringLiteral("Xvfb"),
        {QStringLiteral("-displayfd"), QStringLiteral("1"), QStringLiteral("-screen"),
            QStringLiteral("0"), QStringLiteral("1024x768x24"), QStringLiteral("-nolisten"),
            QStringLiteral("tcp")});
    if (!server_.waitForStarted(5000))
        return;
    QDeadlineTimer deadline(20000);
    QByteArray named;
    while (
        !named.contains('\n') && server_.state() == QProcess::Running && !deadline.hasExpired()) {
        server_.waitForReadyRead(100);
        named += server_.readAllStandardOutput();
    }
    bool ok = false;
    const int display = named.trimmed().toInt(&ok);
    if (!ok || display < 0)
        return;
    // Named is not yet answering on a busy machine: wait for a client to get in.
    const QString name = QStringLiteral(":%1").arg(display);
    while (!deadline.hasExpired()) {
        QProcess probe;
        probe.start(QStringLiteral("xdpyinfo"), {QStringLiteral("-display"), name});
        if (probe.waitForFinished(5000) && probe.exitStatus() == QProcess::NormalExit
            && probe.exitCode() == 0) {
            display_ = display;
            return;
        }
        Pause();
    }
}

XSession::~XSession()
{
    EndProgram();
    if (server_.state() != QProcess::NotRunning) {
        server_.terminate();
        if (!server_.waitForFinished(5000)) {
            server_.kill();
            server_.waitForFinished();
        }
    }
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
    QProcess xdo;
    xdo.setProcessEnvironment(EnvironmentFor(Display()));
    xdo.start(QStringLiteral("xdotool"), arguments);
    if (!xdo.waitForFinished(10000))
        return false;
    if (output)
        *output = QString::fromLocal8Bit(xdo.readAllStandardOutput());
    return xdo.exitStatus() == QProcess::NormalExit && xdo.exitCode() == 0;
}

qulonglong XSession::WaitForWindow(const QString &title, int timeoutMs)
{
    QDeadlineTimer deadline(timeoutMs);
    do {
        QString found;
        if (Xdo({QStringLiteral("search"), QStringLiteral("--onlyvisible"),
                    QStringLiteral("--name"), ExactTitle(title)},
                &found)) {
            const qulonglong window = found.section(QLatin1Char('\n'), 0, 0).toULongLong();
            if (window)
                return window;
        }
        Pause();
    } while (!deadline.hasExpired());
    return 0;
}

bool XSession::WaitForNoWindow(const QString &title, int timeoutMs)
{
    QDeadlineTimer deadline(timeoutMs);
    do {
        QString found;
        Xdo({QStringLiteral("search"), QStringLiteral("--onlyvisible"), QStringLiteral("--name"),
                ExactTitle(title)},
            &found);
        if (found.trimmed().isEmpty())
            return true;
        Pause();
    } while (!deadline.hasExpired());
    return false;
}

QRect XSession::Geometry(qulonglong window)
{
    QString shell;
    if (!Xdo({QStringLiteral("getwindowgeometry"), QStringLiteral("--shell"),
                 QString::number(window)},
            &shell))
        return {};
    QRect rect;
    for (const QString &line : shell.split(QLatin1Char('\n'))) {
        const QString value = line.section(QLatin1Char('='), 1);
        if (line.startsWith(QLatin1String("X=")))
            rect.moveLeft(value.toInt());
        else if (line.startsWith(QLatin1String("Y=")))
            rect.moveTop(value.toInt());
        else if (line.startsWith(QLatin1String("WIDTH=")))
            rect.setWidth(value.toInt());
        else if (line.startsWith(QLatin1String("HEIGHT=")))
            rect.setHeight(value.toInt());
    }
    return rect;
}

QImage XSession::Screenshot()
{
    QProcess grab;
    grab.setProcessEnvironment(EnvironmentFor(Display()));
    grab.start(QStringLiteral("import"),
        {QStringLiteral("-display"), Display(), QStringLiteral("-window"), QStringLiteral("root"),
            QStringLiteral("png:-")});
    if (!grab.waitForFinished(20000))
        return {};
    return QImage::fromData(grab.readAllStandardOutput(), "PNG")
        .convertToFormat(QImage::Format_RGB32);
}

bool XSession::WaitForScreen(const std::function<bool(const QImage &)> &check, int timeoutMs)
{
    QDeadlineTimer deadline(timeoutMs);
    QImage shot;
    do {
        shot = Screenshot();
        if (!shot.isNull() && check(shot))
            return true;
        Pause();
    } while (!deadline.hasExpired());
    // What the screen showed instead, for whoever reads the failure.
    const QString kept = QDir::temp().filePath(QStringLiteral("quorvel-unexpected-screen.png"));
    if (shot.save(kept))
        qWarning("The screen did not show what was expected; it is kept in %s", qPrintable(kept));
    return false;
}

// Keys go through the X test extension to the focused window, as a real
// keyboard's would; events sent to a window directly are marked synthetic.
bool XSession::Key(qulonglong window, const QString &keys)
{
    if (!Xdo({QStringLiteral("windowfocus"), QString::number(window)}))
        return false;
    QStringList arguments {QStringLiteral("key"), QStringLiteral("--delay"), QStringLiteral("30")};
    arguments += keys.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    return Xdo(arguments);
}

bool XSession::Type(qulonglong window, const QString &text)
{
    if (!Xdo({QStringLiteral("windowfocus"), QString::number(window)}))
        return false;
    return Xdo({QStringLiteral("type"), QStringLiteral("--delay"), QStringLiteral("30"), text});
}

bool XSession::MouseMove(QPoint screen)
{
    return Xdo(
        {QStringLiteral("mousemove"), QString::number(screen.x()), QString::number(screen.y())});
}

bool XSession::MouseDown()
{
    return Xdo({QStringLiteral("mousedown"), QStringLiteral("1")});
}

bool XSession::MouseUp()
{
    return Xdo({QStringLiteral("mouseup"), QStringLiteral("1")});
}
