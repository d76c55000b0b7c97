// Small picture files that would cost a decoder minutes of work or gigabytes
// of memory, made afresh for each run rather than kept as blobs.
#pragma once

#include <QByteArray>
#include <QList>

struct HostilePicture
{
    const char *name;
    QByteArray (*make)();
};

// EMF: 2.6 million rectangles on 400 x 400 pixels (62 MB), and 2,000 on
// 4096 x 4096. WMF: 2,000 rectangles over the whole of a placeable 400 x
// 400. Progressive JPEG: 4096 x 4096 with its last scan 2,000 times, and
// 400 x 400 with 50,000 scans. GIF: a 65535 x 65535 frame on a 370 x 380
// screen.
const QList<HostilePicture> &HostilePictures();
