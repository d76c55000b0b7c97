// Vector skins are drawn into pixels at the picture's own size (or `scale`
// times it, for a finer screen), on white, before they are cut like any
// other picture.
#pragma once

#include <QByteArrayView>
#include <QImage>
#include <QString>

// A metafile whose size comes out larger than this on a side, or empty, is
// no skin; the check comes before anything is drawn.
constexpr int MaxMetafileSide = 4096;

// A failed load: no picture, and the reason for whoever asked for one.
inline QImage Fail(QString *reason, const QString &why)
{
    if (reason)
        *reason = why;
    return {};
}

// The caller has checked that the records are whole (PictureFormats.h).
// A null image when the library cannot read the file or its size is
// absurd; `reason` then says why.
QImage DrawWmf(QByteArrayView file, QString *reason, qreal scale = 1);
QImage DrawEmf(QByteArrayView file, QString *reason, qreal scale = 1);
