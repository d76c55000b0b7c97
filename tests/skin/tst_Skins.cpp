// Every skin the game ships, as a player who chose it meets it: the game
// starts with it and each image shows its own rectangle of it.
#include "app/ImageControl.h"
#include "skin/PictureLoader.h"
#include "skin/SkinLayout.h"
#include "support/MainWindow.h"
#include "support/ProgramFolder.h"
#include "support/ScriptedPlatform.h"

#include <QDir>
#include <QTest>

static const QDir Shipped(QStringLiteral(QUORVEL_SKINS_DIR));

class tst_Skins : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void shippedSkinStartsTheGame_data();
    void shippedSkinStartsTheGame();
};

// A gallery gone missing must not pass as a table of no rows.
void tst_Skins::initTestCase()
{
    const QStringList skins = Shipped.entryList(QDir::Files);
    QVERIFY2(skins.contains("default.bmp") && skins.size() >= 4
            && !Shipped.entryList({"*.emf", "*.wmf"}, QDir::Files).isEmpty(),
        qPrintable(Shipped.path()));
}

void tst_Skins::shippedSkinStartsTheGame_data()
{
    QTest::addColumn<QString>("name");
    for (const QString &name : Shipped.entryList(QDir::Files))
        QTest::newRow(qPrintable(name)) << name;
}

void tst_Skins::shippedSkinStartsTheGame()
{
    QFETCH(QString, name);
    ProgramFolder folder;
    // Under a name of its own, beside the folder's usual default skin.
    QVERIFY(QFile::copy(Shipped.filePath(name), folder.File("skins/shipped-" + name)));
    folder.Write("qvl.ini", "shipped-" + name.toLatin1() + "\r\n");
    ScriptedPlatform platform;
    frmMain form(platform, folder.path());
    QVERIFY(StartUp(form, platform, folder));
    QVERIFY(platform.Shown().isEmpty());

    const QImage picture
        = LoadPicture(Shipped.filePath(name)).convertToFormat(QImage::Format_RGB32);
    const QLabel *frames[] = {form.imgUpFrame, form.imgLeftFrame, form.imgRightFrame, form.imgExit,
        form.imgTitle, form.imgCong};
    for (const SkinArea &area : SkinAreas) {
        const QLabel *image
            = area.piece >= 0 ? form.imgPieces[area.piece] : frames[int(area.target)];
        const auto [x, y, width, height] = area.rect;
        QCOMPARE(image->pixmap().toImage().convertToFormat(QImage::Format_RGB32),
            picture.copy(x, y, width, height));
    }
}

QTEST_MAIN(tst_Skins)
#include "tst_Skins.moc"
