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

// A saved game's 36 bytes, laid out here field by field: steps, level
// index, the level name in ten bytes, then the blocks' position codes.
QByteArray SavedGameBytes(int32_t steps, int16_t levelIndex, const QByteArray &levelName,
    const char *picture = "2003/2003/4115/4675/8..9");

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
    // A file that cannot be written whole fails the running test (and false).
    bool Write(const QString &relative, const QByteArray &bytes) const;

    LevelTable levels;

private:
    void Refuse(const QString &relative) const;
    QTemporaryDir dir_;
};
