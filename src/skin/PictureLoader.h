// Reads a skin picture: BMP (also named .dib), GIF, JPEG, WMF or EMF. The
// file's content decides its format, never its name; a file that is cut
// short or damaged, or a picture too large to be a skin, is refused before
// it is decoded.
#pragma once

#include <QImage>
#include <QString>

// A null image when the file is missing, unreadable or no picture; `reason`
// then says why.
QImage LoadPicture(const QString &path, QString *reason = nullptr);

// The same picture for a screen of `devicePixelRatio` device pixels to each
// logical one, finer than `picture` (what LoadPicture gave for `path`):
// a metafile drawn again at that resolution, or, on a screen scaled 1.5 or
// more, the double-size rendering of a raster picture kept under the same
// name in the "@2x" folder beside it. `scale` receives how many of its
// pixels make one of `picture`. A null image when there is nothing finer,
// or when what there is does not match the picture's size: the picture is
// then scaled as it is.
QImage LoadFinePicture(
    const QString &path, const QImage &picture, qreal devicePixelRatio, qreal &scale);
