// Text in the game's files is single-byte Windows-1252. Characters the code
// page cannot hold are written as "?".
#pragma once

#include <QByteArray>
#include <QString>

QByteArray ToAnsi(const QString &text);
QString FromAnsi(const QByteArray &bytes);

// The character's code in the code page, or the code of "?" when the code
// page cannot hold it.
int AnsiCode(QChar character);
