#include "QtPlatform.h"

#include <QDesktopServices>
#include <QFileInfo>
#include <QGuiApplication>
#include <QInputDialog>
#include <QMessageBox>
#include <QScreen>
#include <QUrl>

namespace {

QMessageBox::Icon ToQt(Icon icon)
{
    switch (icon) {
    case Icon::Critical:
        return QMessageBox::Critical;
    case Icon::Question:
        return QMessageBox::Question;
    case Icon::Exclamation:
        return QMessageBox::Warning;
    case Icon::Information:
        return QMessageBox::Information;
    }
    return QMessageBox::NoIcon;
}

QMessageBox::StandardButtons ToQt(Buttons buttons)
{
    switch (buttons) {
    case Buttons::Ok:
        return QMessageBox::Ok;
    case Buttons::YesNo:
        return QMessageBox::Yes | QMessageBox::No;
    case Buttons::YesNoCancel:
        return QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel;
    }
    return QMessageBox::Ok;
}

} // namespace

Answer QtPlatform::MsgBox(
    QWidget *owner, const QString &text, Buttons buttons, Icon icon, const QString &title)
{
    // Lines arrive joined by CR LF; the label breaks on the LF alone.
    QString shown = text;
    shown.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    QMessageBox box(ToQt(icon), title, shown, ToQt(buttons), owner);
    box.setTextFormat(Qt::PlainText);
    switch (box.exec()) {
    case QMessageBox::Yes:
        return Answer::Yes;
    case QMessageBox::No:
        return Answer::No;
    case QMessageBox::Ok:
        return Answer::Ok;
    default:
        // Escape or the close control: Cancel where there is one, else the
        // only way out.
        return buttons == Buttons::YesNoCancel ? Answer::Cancel
            : buttons == Buttons::YesNo        ? Answer::No
                                               : Answer::Ok;
    }
}

QString QtPlatform::InputBox(
    QWidget *owner, const QString &prompt, const QString &title, const QString &defaultText)
{
    bool ok = false;
    const QString text
        = QInputDialog::getText(owner, title, prompt, QLineEdit::Normal, defaultText, &ok);
    return ok ? text : QString();
}

bool QtPlatform::OpenDocument(const QString &target)
{
    const QUrl url = QUrl(target).scheme().isEmpty() || QFileInfo(target).isAbsolute()
        ? QUrl::fromLocalFile(target)
        : QUrl(target);
    // The opener runs detached and cannot report a missing file, so that case
    // is caught here.
    if (url.isLocalFile() && !QFileInfo(url.toLocalFile()).isFile())
        return false;
    return QDesktopServices::openUrl(url);
}

ScreenMetrics QtPlatform::Screen() const
{
    ScreenMetrics metrics;
    if (const QScreen *screen = QGuiApplication::primaryScreen()) {
        metrics.width = float(screen->geometry().width());
        metrics.height = float(screen->geometry().height());
    }
    return metrics;
}
