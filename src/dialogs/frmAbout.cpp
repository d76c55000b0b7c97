#include "frmAbout.h"

#include "app/FormGeometry.h"
#include "app/ImageControl.h"
#include "app/frmMain.h"

#include <QMouseEvent>
#include <QPushButton>

QString VersionLine()
{
    return QStringLiteral("Quorvel Version ") + QString::number(VersionMajor) + QLatin1Char('.')
        + QString::number(VersionMinor) + QString::number(VersionRevision);
}

QCursor HandCursor()
{
    return QCursor(QPixmap(QStringLiteral(":/quorvel/hand.xpm")), 5, 0);
}

AboutLabel::AboutLabel(frmAbout &box, Role role, QWidget *parent)
    : QLabel(parent)
    , box_(box)
    , role_(role)
{
    // The links take their pointer from the first move over them, with no
    // button held.
    setMouseTracking(role != Role::Picture);
}

void AboutLabel::mousePressEvent(QMouseEvent *event)
{
    const int16_t button = ButtonCode(event->button());
    const int16_t shift = ShiftCode(event->modifiers());
    const float x = float(event->position().x()), y = float(event->position().y());
    pressedLeft_ = event->button() == Qt::LeftButton;
    switch (role_) {
    case Role::Picture:
        box_.imgVess_MouseDown(button, shift, x, y);
        break;
    case Role::Email:
        box_.lblEmail_MouseDown(button, shift, x, y);
        break;
    case Role::Updates:
        box_.lblUpdates_MouseDown(button, shift, x, y);
        break;
    }
}

void AboutLabel::mouseMoveEvent(QMouseEvent *event)
{
    int16_t buttons = 0;
    for (const Qt::MouseButton button : {Qt::LeftButton, Qt::RightButton, Qt::MiddleButton})
        if (event->buttons() & button)
            buttons = int16_t(buttons | ButtonCode(button));
    const int16_t shift = ShiftCode(event->modifiers());
    const float x = float(event->position().x()), y = float(event->position().y());
    if (role_ == Role::Email)
        box_.lblEmail_MouseMove(buttons, shift, x, y);
    else if (role_ == Role::Updates)
        box_.lblUpdates_MouseMove(buttons, shift, x, y);
}

void AboutLabel::mouseReleaseEvent(QMouseEvent *event)
{
    // A click is the primary button pressed and released over the link.
    const bool click = pressedLeft_ && event->button() == Qt::LeftButton
        && rect().contains(event->position().toPoint());
    if (event->button() == Qt::LeftButton)
        pressedLeft_ = false;
    if (!click)
        return;
    if (role_ == Role::Email)
        box_.lblEmail_Click();
    else if (role_ == Role::Updates)
        box_.lblUpdates_Click();
}

void AboutLabel::mouseDoubleClickEvent(QMouseEvent *event)
{
    // The second press of a double click is no press of its own: the first
    // click has opened the link already, and a second mail window or page,
    // or a second bonus message, would only be in the way.
    event->accept();
}

frmAbout::frmAbout(frmMain &main)
    : FixedDialog(main, QStringLiteral("About"), 5580, 1920)
{
    imgVess = new AboutLabel(*this, AboutLabel::Role::Picture, this);
    imgVess->setGeometry(PxRect(45, 45, 810, 840));
    imgVess->setPixmap(QPixmap(QStringLiteral(":/quorvel/about.png")));
    imgVess->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    lblProd = new QLabel(this);
    lblProd->setGeometry(PxRect(960, 120, 3135, 735));
    lblProd->setTextFormat(Qt::PlainText);
    lblProd->setWordWrap(true);
    // The box's own text is set small, like its links, so the version line,
    // a blank line and the notice fit the label.
    lblProd->setFont(SansFont(8.25));
    lblProd->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    cmdOk = new QPushButton(QStringLiteral("&OK"), this);
    cmdOk->setGeometry(PxRect(4320, 120, 1095, 375));
    lblEmail = new AboutLabel(*this, AboutLabel::Role::Email, this);
    lblEmail->setGeometry(PxRect(240, 960, 2655, 255));
    lblEmail->setText(QStringLiteral("Email: ") + ContactAddress);
    lblUpdates = new AboutLabel(*this, AboutLabel::Role::Updates, this);
    lblUpdates->setGeometry(PxRect(240, 1440, 5055, 255));
    lblUpdates->setText(QStringLiteral("Updates:  ") + WebAddress);
    QFont linkFont = SansFont(8.25);
    linkFont.setUnderline(true);
    for (QLabel *link : {static_cast<QLabel *>(lblEmail), static_cast<QLabel *>(lblUpdates)}) {
        link->setTextFormat(Qt::PlainText);
        link->setFont(linkFont);
        SetLinkColour(*link, QColor(0, 0, 255));
    }
    cmdOk->setFocus();
    connect(cmdOk, &QPushButton::clicked, this, &frmAbout::cmdOk_Click);
    Form_Load();
}

void frmAbout::Form_Load()
{
    lblProd->setText(VersionLine() + QStringLiteral("\n\n") + CopyrightNotice);
    eggStep = 0;
}

void frmAbout::cmdOk_Click()
{
    accept();
}

void frmAbout::SetLinkColour(QLabel &label, const QColor &colour)
{
    QPalette palette = label.palette();
    palette.setColor(QPalette::WindowText, colour);
    label.setPalette(palette);
}

QColor frmAbout::LinkColour(const QLabel &label)
{
    return label.palette().color(QPalette::WindowText);
}

void frmAbout::lblEmail_MouseMove([[maybe_unused]] int16_t Button, [[maybe_unused]] int16_t Shift,
    [[maybe_unused]] float X, [[maybe_unused]] float Y)
{
    lblEmail->setCursor(HandCursor());
}

void frmAbout::lblUpdates_MouseMove([[maybe_unused]] int16_t Button, [[maybe_unused]] int16_t Shift,
    [[maybe_unused]] float X, [[maybe_unused]] float Y)
{
    lblUpdates->setCursor(HandCursor());
}

void frmAbout::lblEmail_MouseDown([[maybe_unused]] int16_t Button, int16_t Shift,
    [[maybe_unused]] float X, [[maybe_unused]] float Y)
{
    SetLinkColour(*lblEmail, QColor(255, 0, 0));
    if (Shift == (ShiftKey | AltKey))
        eggStep = 2;
}

void frmAbout::lblUpdates_MouseDown([[maybe_unused]] int16_t Button, int16_t Shift,
    [[maybe_unused]] float X, [[maybe_unused]] float Y)
{
    SetLinkColour(*lblUpdates, QColor(255, 0, 0));
    if (Shift == (ShiftKey | AltKey) && eggStep == 2)
        eggStep = 3;
}

void frmAbout::lblEmail_Click()
{
    const QString target
        = QStringLiteral("mailto:") + ContactAddress + QStringLiteral("?Subject=Quorvel");
    if (main_.platform().OpenDocument(target))
        return;
    main_.platform().MsgBox(this,
        QStringLiteral("Unable to start your Email agent automatically.\r\n")
            + QStringLiteral("Please send an Email to ") + ContactAddress
            + QStringLiteral(" manually."),
        Buttons::Ok, Icon::Information, QStringLiteral("Quorvel - Email"));
}

void frmAbout::lblUpdates_Click()
{
    if (main_.platform().OpenDocument(WebAddress))
        return;
    main_.platform().MsgBox(this,
        QStringLiteral("Unable to start your web browser automatically.\r\n")
            + QStringLiteral("Please goto the site ") + WebAddress + QStringLiteral(" manually."),
        Buttons::Ok, Icon::Information, QStringLiteral("Quorvel - Updates"));
}

void frmAbout::imgVess_MouseDown([[maybe_unused]] int16_t Button, int16_t Shift,
    [[maybe_unused]] float X, [[maybe_unused]] float Y)
{
    if (eggStep != 3 || Shift != ShiftKey)
        return;
    main_.ShowSecondPictures();
    main_.platform().MsgBox(this, QStringLiteral("You have found the Easter Egg!"), Buttons::Ok,
        Icon::Information, QStringLiteral("Quorvel - Easter Egg"));
}
