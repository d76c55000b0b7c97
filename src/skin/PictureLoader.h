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
