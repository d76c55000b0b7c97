// Holds the skin picture and hands out copies of one rectangle of it at a
// time, like a clip holder that is never shown.
#pragma once

#include <QImage>
#include <QPixmap>

struct SkinRect;

class PictureClip
{
public:
    void SetPicture(const QImage &picture)
    {
        picture_ = picture;
        fine_ = QImage();
    }
    const QImage &Picture() const { return picture_; }
    // A finer rendering of the held picture, `scale` of its pixels to one
    // of the picture's: the clips are then cut from it at the rectangle
    // scaled alike and carry that device pixel ratio, so they keep the
    // picture's logical size.
    void SetFinePicture(const QImage &fine, qreal scale)
    {
        fine_ = fine;
        scale_ = scale;
    }

    void SetClip(int x, int y, int width, int height);
    void SetClip(const SkinRect &rect);
    // A rectangle that is not wholly inside the picture cannot be cut: the
    // result is then a null pixmap.
    QPixmap Clip() const;

private:
    QImage picture_;
    QImage fine_;
    qreal scale_ = 1;
    QRect clip_;
};
