// A temporary program folder with a level file, a skin whose pixels are all
// known, and whatever a test wants to break in it.
#pragma once

#include "files/LevelFile.h"

#include <QImage>
#include <QTemporaryDir>

// Five rows of four characters separated by "/", block numbers and "." for
// empty: "2003/2003/4115/4675/8..9".
Layout LayoutFromPicture(const char *picture);

// A skin picture in which every pixel differs from every other, so any cut
// can be checked pixel by pixel against the place it came from.
QImage KnownSkin(int width = 370, int height = 380);

class ProgramFolder
{
public:
    // Every level gets the first picture unless more are given; the level
    // names are "Level NN  " with their padding.
    explicit ProgramFolder(
        std::initializer_list<const char *> pictures = {"2003/2003/4115/4675/8..9"},
        bool withSkin = true);

    QString path() const { return dir_.path(); }
    QString File(const QString &relative) const
    {
        return dir_.path() + QLatin1Char('/') + relative;
    }
    QByteArray Read(const QString &relative) const;
    // False when the file could not be written whole.
    bool Write(const QString &relative, const QByteArray &bytes) const;

    LevelTable levels;

private:
    QTemporaryDir dir_;
};
