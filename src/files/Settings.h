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

// The line that FirstField reads back as `setting`: the name as it stands,
// or in double quotes when it holds a comma or begins with a space or a
// double quote. Empty when no line can: the name holds a character the
// code page lacks or a line break, or needs the quotes and holds one.
QByteArray SettingLine(const QString &setting);

// Why SettingLine has no line for `setting`, as a sentence for the
// player; empty when it has one.
QString WhySettingCannotBeKept(const QString &setting);

// Replaces the file with the setting's line; a failure, or a setting that
// has no line, keeps the old file.
FileError WriteSkinSetting(const QString &path, const QString &setting);

// A setting names a picture in the skins folder only when it is a plain file
// name: empty, "." and "..", and anything with a folder separator or a NUL,
// would look elsewhere.
bool IsPlainFileName(const QString &name);
