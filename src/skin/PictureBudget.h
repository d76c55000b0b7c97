// How much work a picture may cost before it is refused. A skin is read
// while the player waits, and a small file can ask a decoder for minutes of
// work: each check reads only the file's own structure, before any library
// runs, and refuses what would take more than a fraction of a second or a
// few tens of megabytes on a modest machine. Each returns an empty text
// when the picture is within its budget, else why it is not.
#pragma once

#include "PictureFormats.h"

#include <QByteArrayView>
#include <QSize>
#include <QString>

// Metafiles are played record by record; a file holding more of them than
// any drawing a skin needs is refused before it is read.
constexpr qsizetype MaxMetafileBytes = qsizetype(4) << 20;
constexpr qsizetype MaxMetafileRecords = 50000;
// Device pixels a metafile's drawing may fill, summed over its records.
constexpr qint64 MaxEmfPixelWork = qint64(400) << 20;
constexpr qint64 MaxWmfPixelWork = qint64(48) << 20;
// Pixels times scans a JPEG's decoder may go through.
constexpr qint64 MaxJpegScanWork = qint64(256) << 20;
constexpr int MaxJpegScans = 1000;

// The records' count and the file's size, for either kind of metafile.
QString CheckMetafileRecords(PictureFormat format, QByteArrayView file);

// The drawing onto a device of `device` pixels: every record that draws is
// taken to fill as much of it as its own coordinates can reach. For EMF,
// whose drawing may reach past the picture, that is the whole device.
QString CheckEmfWork(QByteArrayView file, QSize device);
QString CheckWmfWork(QByteArrayView file, QSize device);

// Progressive JPEG decoders go over every pixel once for each scan.
QString CheckJpegWork(QByteArrayView file);

// Every frame lies within the picture's screen, which a skin can hold.
QString CheckGifFrames(QByteArrayView file, qint64 maxPixels);
