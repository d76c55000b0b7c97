// What a picture file is, told by its first bytes, and whether it holds all
// that its header promises. Qt's decoders fill a cut-off file up with
// background and call it a picture; a skin that lost its end must not load.
#pragma once

#include <QByteArrayView>
#include <QString>

enum class PictureFormat { Unknown, Bmp, Gif, Jpeg, Wmf, Emf };

PictureFormat SniffPicture(QByteArrayView file);

// Each returns an empty string when the file is whole, else what is wrong.
QString CheckBmp(QByteArrayView file);
QString CheckGif(QByteArrayView file);
QString CheckJpeg(QByteArrayView file);
// A metafile is whole when its records chain up to the end record.
QString CheckWmf(QByteArrayView file);
QString CheckEmf(QByteArrayView file);

// Little-endian fields at a byte offset; the caller has checked the length.
quint16 Le16(QByteArrayView file, qsizetype at);
quint32 Le32(QByteArrayView file, qsizetype at);
inline qint16 LeI16(QByteArrayView file, qsizetype at)
{
    return qint16(Le16(file, at));
}
inline qint32 LeI32(QByteArrayView file, qsizetype at)
{
    return qint32(Le32(file, at));
}
