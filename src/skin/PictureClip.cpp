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
    return QPixmap::fromImage(picture_.copy(clip_));
}
