#include "PictureClip.h"

#include "SkinLayout.h"

void PictureClip::SetClip(int x, int y, int width, int height)
{
    clip_ = QRect(x, y, width, height);
}

void PictureClip::SetClip(const SkinRect &rect)
{
    SetClip(rect.x, rect.y, rect.width, rect.height);
}

QPixmap PictureClip::Clip() const
{
    if (picture_.isNull() || clip_.isEmpty() || !picture_.rect().contains(clip_))
        return {};
    if (!fine_.isNull()) {
        const QRect fine(QRectF(
            clip_.x() * scale_, clip_.y() * scale_, clip_.width() * scale_, clip_.height() * scale_)
                             .toRect());
        if (fine_.rect().contains(fine)) {
            QPixmap picture = QPixmap::fromImage(fine_.copy(fine));
            picture.setDevicePixelRatio(scale_);
            return picture;
        }
    }
    return QPixmap::fromImage(picture_.copy(clip_));
}
