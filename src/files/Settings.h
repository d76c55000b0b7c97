// The settings file holds one line, the skin's file name, in Windows-1252,
// ended by CR LF. Nothing else: no keys, no sections.
#pragma once

#include "RawFile.h"

#include <QByteArray>
#include <QString>

inline const QString DefaultSkin = QStringLiteral("default.bmp");

// The first field of the file: leading spaces skipped; a field that opens
// with a double quote runs to the next one (commas inside belong to it);
// otherwise it runs to the first comma or the end of the line.
QString FirstField(const QByteArray &content);

// Reads the first field of the file. Only the start of a huge file is read.
FileError ReadSkinSetting(const QString &path, QString &setting);

// Replaces the file with the one line; a failure keeps the old file.
FileError WriteSkinSetting(const QString &path, const QString &setting);

// A setting names a picture in the skins folder only when it is a plain file
// name: empty, "." and "..", and anything with a folder separator or a NUL,
// would look elsewhere.
bool IsPlainFileName(const QString &name);
