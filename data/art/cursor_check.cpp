// Guards the hand-drawn cursor: a slip while editing the XPM by hand (a stray colour, a gap
// in the outline, the finger moved off the hot spot) would otherwise only show up as an
// odd-looking or badly aimed mouse pointer.

#include <QImage>
#include <QTest>

namespace {

constexpr QPoint hotSpot(5, 0);

bool isBlack(QRgb pixel)
{
    return qAlpha(pixel) == 255 && qRed(pixel) == 0 && qGreen(pixel) == 0 && qBlue(pixel) == 0;
}

bool isWhite(QRgb pixel)
{
    return qAlpha(pixel) == 255 && qRed(pixel) == 255 && qGreen(pixel) == 255
        && qBlue(pixel) == 255;
}

} // namespace

class CursorCheck : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY2(cursor.load(QStringLiteral(QUORVEL_HAND_XPM)), QUORVEL_HAND_XPM);
        cursor = cursor.convertToFormat(QImage::Format_ARGB32);
    }

    void isBlackAndWhiteOnTransparent()
    {
        QCOMPARE(cursor.size(), QSize(32, 32));
        int black = 0;
        int white = 0;
        for (int y = 0; y < cursor.height(); ++y) {
            for (int x = 0; x < cursor.width(); ++x) {
                const QRgb pixel = cursor.pixel(x, y);
                black += isBlack(pixel);
                white += isWhite(pixel);
                if (!isBlack(pixel) && !isWhite(pixel) && qAlpha(pixel) != 0)
                    QFAIL(qPrintable(QStringLiteral("pixel (%1, %2) is neither black, white nor "
                                                    "transparent")
                                         .arg(x)
                                         .arg(y)));
            }
        }
        QVERIFY(black > 0);
        QVERIFY(white > black);
    }

    // White touching transparency would let the hand melt into light window backgrounds.
    void outlineHasNoGaps()
    {
        for (int y = 0; y < cursor.height(); ++y) {
            for (int x = 0; x < cursor.width(); ++x) {
                if (!isWhite(cursor.pixel(x, y)))
                    continue;
                const QPoint around[] = {{x - 1, y}, {x + 1, y}, {x, y - 1}, {x, y + 1}};
                for (const QPoint &next : around) {
                    const bool outside
                        = !cursor.rect().contains(next) || qAlpha(cursor.pixel(next)) == 0;
                    if (outside)
                        QFAIL(qPrintable(
                            QStringLiteral("white pixel (%1, %2) has no outline").arg(x).arg(y)));
                }
            }
        }
    }

    // The click lands on the hot spot, so that is where the fingertip has to be: the middle
    // of the hand's topmost row.
    void fingertipIsOnTheHotSpot()
    {
        QVERIFY(isBlack(cursor.pixel(hotSpot)));
        int left = cursor.width();
        int right = -1;
        for (int x = 0; x < cursor.width(); ++x) {
            if (qAlpha(cursor.pixel(x, 0)) != 0) {
                left = qMin(left, x);
                right = qMax(right, x);
            }
        }
        QCOMPARE(left + right, 2 * hotSpot.x());
        QVERIFY2(right - left <= 4, "top row is wider than a fingertip");
    }

private:
    QImage cursor;
};

QTEST_GUILESS_MAIN(CursorCheck)
#include "cursor_check.moc"
