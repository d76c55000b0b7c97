// Holds the skin picture and hands out copies of one rectangle of it at a
// time, like a clip holder that is never shown.
#pragma once

#include <QImage>
#include <QPixmap>

struct SkinRect;

class PictureClip
{
public:
    void SetPicture(const QImage &picture) { picture_ = picture; }
    const QImage &Picture() const { return picture_; }

    void SetClip(int x, int y, int width, int height);
    void SetClip(const SkinRect &rect);
    // A rectangle that is not wholly inside the picture cannot be cut: the
    // result is then a null pixmap.
    QPixmap Clip() const;

private:
    QImage picture_;
    QRect clip_;
};
