// quorvel-skinmeta: writes a skin drawn in plain SVG as a metafile.
//
//     quorvel-skinmeta SOURCE.svg OUTPUT.(emf|wmf) WIDTH HEIGHT
//
// It runs during the build: any failure stops it with one readable line and
// leaves no file behind, so a half-written skin never looks up to date.

#include "Metafile.h"
#include "SvgSource.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include <cstdio>
#include <cstdlib>

namespace {

[[noreturn]] void Fail(const QString &message)
{
    std::fprintf(stderr, "quorvel-skinmeta: %s\n", qPrintable(message));
    std::exit(EXIT_FAILURE);
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    const QStringList args = app.arguments();
    if (args.size() != 5)
        Fail(QStringLiteral("usage: quorvel-skinmeta SOURCE.svg OUTPUT.(emf|wmf) WIDTH HEIGHT"));
    const QString &source = args[1], &output = args[2];
    const QSize wanted(args[3].toInt(), args[4].toInt());
    const QString suffix = QFileInfo(output).suffix().toLower();
    if (suffix != QLatin1String("emf") && suffix != QLatin1String("wmf"))
        Fail(QStringLiteral("%1: output must end in .emf or .wmf").arg(output));

    QFile in(source);
    if (!in.open(QIODevice::ReadOnly))
        Fail(QStringLiteral("%1: %2").arg(source, in.errorString()));
    QString error;
    const std::optional<MetafileDrawing> drawing
        = ReadSvgSource(in.readAll(), QFileInfo(output).completeBaseName(), &error);
    if (!drawing)
        Fail(QStringLiteral("%1: %2").arg(source, error));
    // Skins are cut at fixed pixels: a drawing of another size is a mistake
    // in the build files or the drawing.
    if (drawing->Size() != wanted)
        Fail(QStringLiteral("%1: drawing is %2x%3, expected %4x%5")
                 .arg(source)
                 .arg(drawing->Size().width())
                 .arg(drawing->Size().height())
                 .arg(wanted.width())
                 .arg(wanted.height()));

    const QByteArray bytes
        = suffix == QLatin1String("emf") ? drawing->Emf(&error) : drawing->Wmf(&error);
    if (bytes.isEmpty())
        Fail(QStringLiteral("%1: %2").arg(source, error));
    QSaveFile out(output);
    if (!out.open(QIODevice::WriteOnly) || out.write(bytes) != bytes.size() || !out.commit())
        Fail(QStringLiteral("%1: cannot write: %2").arg(output, out.errorString()));
    return EXIT_SUCCESS;
}
