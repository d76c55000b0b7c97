// A real X server (Xvfb) of the test's own, the real program running in it
// from a program folder of the test's, and a pointer and keyboard driven
// through xdotool. Everything waits by polling for what it expects, with a
// bound, so a loaded machine makes the test slower, not flaky.
#pragma once

#include <QImage>
#include <QProcess>
#include <QRect>
#include <QString>

#include <functional>

class XSession
{
public:
    XSession();
    ~XSession();
    XSession(const XSession &) = delete;
    XSession &operator=(const XSession &) = delete;

    bool Started() const { return display_ >= 0; }
    QString Display() const { return QStringLiteral(":%1").arg(display_); }

    // Starts `program` (copied beside its data by the caller) with this
    // display, ending the one started before if it still runs.
    bool Launch(const QString &program);
    void EndProgram();
    QProcess &Program() { return program_; }
    // Waits for the program to end; its exit code, or -1 when it did not.
    int WaitForExit(int timeoutMs = 10000);

    // The id of the first visible window whose title matches the pattern
    // exactly, waiting for it to appear; 0 when it never does.
    qulonglong WaitForWindow(const QString &title, int timeoutMs = 10000);
    bool WaitForNoWindow(const QString &title, int timeoutMs = 10000);
    // The window's outer rectangle on the screen.
    QRect Geometry(qulonglong window);

    QImage Screenshot();
    // Takes screenshots until `check` accepts one.
    bool WaitForScreen(const std::function<bool(const QImage &)> &check, int timeoutMs = 10000);

    // xdotool with the given arguments; true when it succeeded.
    bool Xdo(const QStringList &arguments, QString *output = nullptr);
    bool Key(qulonglong window, const QString &keys);
    // Opens a File menu item by its access key and waits for the window it
    // opens. A menu still opening when the item's key arrived is closed and
    // tried again, a bounded number of times.
    qulonglong FromFileMenu(
        qulonglong window, const QString &item, const QString &title, int timeoutMs = 3000);
    bool Type(qulonglong window, const QString &text);
    bool MouseMove(QPoint screen);
    bool MouseDown();
    bool MouseUp();

private:
    int display_ = -1;
    QProcess server_;
    QProcess program_;
};
