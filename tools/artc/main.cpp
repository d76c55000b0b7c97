// quorvel-artc: turns one of the game's SVG drawings into the raster file the game loads.
//
//     quorvel-artc SOURCE.svg OUTPUT.(bmp|png) WIDTH HEIGHT
//
// It runs during the build, so every failure must stop the build with one readable line
// instead of leaving a black or half-drawn picture behind for the game to load.

#include <QByteArray>
#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <QImage>
#include <QImageWriter>
#include <QPainter>
#include <QSvgRenderer>

#include <cstdio>
#include <cstdlib>
#include <optional>

namespace {

// QtSvg only logs (and then skips) elements it cannot draw; a drawing that silently loses a
// gradient or a shape must not get through, so such messages are collected and fail the run.
QString firstSvgComplaint;

void collectSvgComplaints(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    const bool fromSvg = context.category && qstrncmp(context.category, "qt.svg", 6) == 0;
    if (fromSvg && type != QtDebugMsg && type != QtInfoMsg) {
        if (firstSvgComplaint.isEmpty())
            firstSvgComplaint = text.simplified();
        return;
    }
    // Build machines often run without a login session; Qt's note about the missing runtime
    // folder says nothing about the picture and would only clutter the build log.
    if (text.startsWith(QLatin1String("QStandardPaths: XDG_RUNTIME_DIR not set")))
        return;
    std::fprintf(stderr, "%s\n", qPrintable(qFormatLogMessage(type, context, text)));
}

[[noreturn]] void fail(const QString &message)
{
    std::fprintf(stderr, "quorvel-artc: %s\n", qPrintable(message));
    std::exit(EXIT_FAILURE);
}

std::optional<int> parseDimension(const QString &text)
{
    bool ok = false;
    const int value = text.toInt(&ok);
    // The largest picture we make is a 256 px icon; anything huge is a typo in a build file.
    if (!ok || value < 1 || value > 4096)
        return std::nullopt;
    return value;
}

// The game's skin loader expects plain 24-bit uncompressed bitmaps; check the header we
// actually wrote rather than trusting the image plug-in's defaults. Returns what is wrong.
QString checkBitmapHeader(const QString &path, QSize size)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return QStringLiteral("cannot read back what was written");
    const QByteArray header = file.read(54);
    if (header.size() < 54 || !header.startsWith("BM"))
        return QStringLiteral("written file is not a BMP");
    const auto u16
        = [&](int at) { return quint16(quint8(header[at]) | quint8(header[at + 1]) << 8); };
    const auto i32 = [&](int at) {
        return qint32(quint32(quint8(header[at])) | quint32(quint8(header[at + 1])) << 8
            | quint32(quint8(header[at + 2])) << 16 | quint32(quint8(header[at + 3])) << 24);
    };
    const qint32 rows = i32(22);
    if (i32(18) != size.width() || (rows < 0 ? -rows : rows) != size.height() || u16(28) != 24
        || i32(30) != 0)
        return QStringLiteral("written BMP is not %1x%2, 24-bit, uncompressed")
            .arg(size.width())
            .arg(size.height());
    return {};
}

} // namespace

int main(int argc, char **argv)
{
    qInstallMessageHandler(collectSvgComplaints);
    QGuiApplication app(argc, argv);

    const QStringList args = app.arguments();
    if (args.size() != 5)
        fail(QStringLiteral("usage: quorvel-artc SOURCE.svg OUTPUT.(bmp|png) WIDTH HEIGHT"));
    const QString &source = args[1];
    const QString &output = args[2];
    const std::optional<int> width = parseDimension(args[3]);
    const std::optional<int> height = parseDimension(args[4]);
    if (!width || !height)
        fail(QStringLiteral("bad size '%1 %2': expected two whole numbers from 1 to 4096")
                 .arg(args[3], args[4]));
    const QSize size(*width, *height);

    const QString suffix = QFileInfo(output).suffix().toLower();
    if (suffix != QLatin1String("bmp") && suffix != QLatin1String("png"))
        fail(QStringLiteral("%1: output must end in .bmp or .png").arg(output));
    const bool bitmap = suffix == QLatin1String("bmp");

    if (!QFileInfo(source).isFile())
        fail(QStringLiteral("%1: no such file").arg(source));
    QSvgRenderer renderer(source);
    if (!renderer.isValid())
        fail(QStringLiteral("%1: not a readable SVG drawing%2")
                 .arg(source,
                     firstSvgComplaint.isEmpty()
                         ? QString()
                         : QStringLiteral(" (") + firstSvgComplaint + QLatin1Char(')')));

    // Skins are cut at fixed pixel rectangles, so a drawing must never be stretched to fit:
    // a size whose proportions differ from the drawing's is a mistake in the build files.
    const QRectF box = renderer.viewBoxF();
    if (box.isEmpty())
        fail(QStringLiteral("%1: drawing has no size (missing width/height or viewBox)")
                 .arg(source));
    const double heightAtThisWidth = box.height() * size.width() / box.width();
    if (qAbs(heightAtThisWidth - size.height()) >= 0.5)
        fail(QStringLiteral("%1: drawing is %2x%3, which cannot fill %4x%5 without distortion")
                 .arg(source)
                 .arg(box.width())
                 .arg(box.height())
                 .arg(size.width())
                 .arg(size.height()));

    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    {
        QPainter painter(&image);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        renderer.render(&painter, QRectF(QPointF(0, 0), QSizeF(size)));
    }
    if (!firstSvgComplaint.isEmpty())
        fail(QStringLiteral("%1: %2").arg(source, firstSvgComplaint));

    if (bitmap) {
        // A bitmap has no alpha channel: any see-through pixel would come out black.
        for (int y = 0; y < image.height(); ++y) {
            const auto *line = reinterpret_cast<const QRgb *>(image.constScanLine(y));
            for (int x = 0; x < image.width(); ++x) {
                if (qAlpha(line[x]) != 255)
                    fail(QStringLiteral("%1: pixel (%2, %3) is not opaque; a BMP cannot keep it")
                             .arg(source)
                             .arg(x)
                             .arg(y));
            }
        }
        image = image.convertToFormat(QImage::Format_RGB888);
    } else {
        image = image.convertToFormat(QImage::Format_ARGB32);
    }

    // A build step that fails must not leave a file behind, or the next build would take the
    // broken picture as up to date.
    QImageWriter writer(output, bitmap ? QByteArrayLiteral("bmp") : QByteArrayLiteral("png"));
    if (!writer.write(image)) {
        QFile::remove(output);
        fail(QStringLiteral("%1: cannot write: %2").arg(output, writer.errorString()));
    }
    if (bitmap) {
        const QString problem = checkBitmapHeader(output, size);
        if (!problem.isEmpty()) {
            QFile::remove(output);
            fail(QStringLiteral("%1: %2").arg(output, problem));
        }
    }
    return EXIT_SUCCESS;
}
