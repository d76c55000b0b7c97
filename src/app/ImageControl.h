// An image of the main window: a picture shown one pixel to one pixel,
// positioned in coordinate units like every other window measure. The
// position is kept in units and turned into pixels with the screen's current
// units per pixel, so a screen of 15 units per pixel and one of 1 land the
// picture on the same pixel.
#pragma once

#include <QLabel>

class ImageControl : public QLabel
{
    Q_OBJECT
public:
    explicit ImageControl(QWidget *parent);

    // The picture's size, in logical pixels, becomes the image's size.
    void SetPicture(const QPixmap &picture);

    float Left() const { return left_; }
    float Top() const { return top_; }
    void SetLeft(float units, float unitsPerPixelX);
    void SetTop(float units, float unitsPerPixelY);
    float WidthUnits(float unitsPerPixelX) const { return float(width()) * unitsPerPixelX; }
    float HeightUnits(float unitsPerPixelY) const { return float(height()) * unitsPerPixelY; }

private:
    float left_ = 0;
    float top_ = 0;
};

class frmMain;

// One of the ten block images: hands its mouse events to the main window's
// handlers, with positions in coordinate units relative to itself. After a
// press Qt keeps sending the moves and the release here, wherever the
// pointer goes, which is the capture a drag needs.
class BlockImage : public ImageControl
{
    Q_OBJECT
public:
    BlockImage(frmMain &form, int16_t index, QWidget *parent);

    // The keyboard's selection: a frame over the picture, dark and light
    // lines together so that it shows on any skin.
    void SetSelected(bool selected);
    bool Selected() const { return selected_; }

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;

private:
    frmMain &form_;
    int16_t index_;
    bool selected_ = false;
};

// Mouse buttons and modifier keys as the handlers count them: left 1, right
// 2, middle 4; the modifier keys held add up to a state.
enum : int16_t { ShiftKey = 1, CtrlKey = 2, AltKey = 4 };
int16_t ButtonCode(Qt::MouseButton button);
int16_t ShiftCode(Qt::KeyboardModifiers modifiers);
