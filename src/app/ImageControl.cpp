#include "ImageControl.h"

#include "FormGeometry.h"
#include "frmMain.h"

#include <QMouseEvent>
#include <QPainter>

ImageControl::ImageControl(QWidget *parent)
    : QLabel(parent)
{
    setScaledContents(false);
    setAlignment(Qt::AlignLeft | Qt::AlignTop);
    setContentsMargins(0, 0, 0, 0);
}

void ImageControl::SetPicture(const QPixmap &picture)
{
    setPixmap(picture);
    // A picture for a finer screen keeps the logical size of its cut.
    resize(picture.deviceIndependentSize().toSize());
}

void ImageControl::SetLeft(float units, float unitsPerPixelX)
{
    left_ = units;
    move(RoundHalfEven(units / unitsPerPixelX), y());
}

void ImageControl::SetTop(float units, float unitsPerPixelY)
{
    top_ = units;
    move(x(), RoundHalfEven(units / unitsPerPixelY));
}

BlockImage::BlockImage(frmMain &form, int16_t index, QWidget *parent)
    : ImageControl(parent)
    , form_(form)
    , index_(index)
{ }

void BlockImage::mousePressEvent(QMouseEvent *event)
{
    const ScreenMetrics screen = form_.Screen();
    form_.imgPieces_MouseDown(index_, ButtonCode(event->button()), ShiftCode(event->modifiers()),
        float(event->position().x()) * screen.unitsPerPixelX,
        float(event->position().y()) * screen.unitsPerPixelY);
}

void BlockImage::mouseMoveEvent(QMouseEvent *event)
{
    const ScreenMetrics screen = form_.Screen();
    int16_t buttons = 0;
    for (const Qt::MouseButton button : {Qt::LeftButton, Qt::RightButton, Qt::MiddleButton})
        if (event->buttons() & button)
            buttons = int16_t(buttons | ButtonCode(button));
    form_.imgPieces_MouseMove(index_, buttons, ShiftCode(event->modifiers()),
        float(event->position().x()) * screen.unitsPerPixelX,
        float(event->position().y()) * screen.unitsPerPixelY);
}

void BlockImage::mouseReleaseEvent(QMouseEvent *event)
{
    const ScreenMetrics screen = form_.Screen();
    form_.imgPieces_MouseUp(index_, ButtonCode(event->button()), ShiftCode(event->modifiers()),
        float(event->position().x()) * screen.unitsPerPixelX,
        float(event->position().y()) * screen.unitsPerPixelY);
}

void BlockImage::mouseDoubleClickEvent(QMouseEvent *event)
{
    // The second press of a double click is a press like any other.
    mousePressEvent(event);
}

int16_t ButtonCode(Qt::MouseButton button)
{
    switch (button) {
    case Qt::LeftButton:
        return 1;
    case Qt::RightButton:
        return 2;
    case Qt::MiddleButton:
        return 4;
    default:
        return 0;
    }
}

int16_t ShiftCode(Qt::KeyboardModifiers modifiers)
{
    int16_t code = 0;
    if (modifiers & Qt::ShiftModifier)
        code = int16_t(code | ShiftKey);
    if (modifiers & Qt::ControlModifier)
        code = int16_t(code | CtrlKey);
    if (modifiers & Qt::AltModifier)
        code = int16_t(code | AltKey);
    return code;
}

void BlockImage::SetSelected(bool selected)
{
    if (selected == selected_)
        return;
    selected_ = selected;
    update();
}

void BlockImage::paintEvent(QPaintEvent *event)
{
    ImageControl::paintEvent(event);
    if (!selected_)
        return;
    QPainter painter(this);
    const QRect outer = rect().adjusted(0, 0, -1, -1);
    painter.setPen(QPen(Qt::black, 1));
    painter.drawRect(outer);
    painter.drawRect(outer.adjusted(4, 4, -4, -4));
    painter.setPen(QPen(QColor(255, 214, 0), 3, Qt::SolidLine, Qt::SquareCap, Qt::MiterJoin));
    painter.drawRect(outer.adjusted(2, 2, -2, -2));
}
