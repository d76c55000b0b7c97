// Little-endian fields and fixed-length single-byte text, shared by the
// level file and the saved-game record.
#pragma once

#include <QByteArray>
#include <QString>

#include <cstdint>

int16_t ReadInt16(const QByteArray &bytes, qsizetype at);
int32_t ReadInt32(const QByteArray &bytes, qsizetype at);
void AppendInt16(QByteArray &bytes, int16_t value);
void AppendInt32(QByteArray &bytes, int32_t value);

// Exactly `length` bytes of Windows-1252: longer text is cut, shorter text
// padded with spaces.
QByteArray FixedText(const QString &text, qsizetype length);
