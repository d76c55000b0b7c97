#include "Bytes.h"

#include "CodePage.h"

#include <QtEndian>

int16_t ReadInt16(const QByteArray &bytes, qsizetype at)
{
    return qFromLittleEndian<qint16>(bytes.constData() + at);
}

int32_t ReadInt32(const QByteArray &bytes, qsizetype at)
{
    return qFromLittleEndian<qint32>(bytes.constData() + at);
}

void AppendInt16(QByteArray &bytes, int16_t value)
{
    char buffer[2];
    qToLittleEndian<qint16>(value, buffer);
    bytes.append(buffer, 2);
}

void AppendInt32(QByteArray &bytes, int32_t value)
{
    char buffer[4];
    qToLittleEndian<qint32>(value, buffer);
    bytes.append(buffer, 4);
}

QByteArray FixedText(const QString &text, qsizetype length)
{
    QByteArray bytes = ToAnsi(text.left(length));
    if (bytes.size() < length)
        bytes.append(length - bytes.size(), ' ');
    return bytes;
}
