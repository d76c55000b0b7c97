#include "PictureLoader.h"

#include <QFileInfo>
#include <QImageReader>

namespace {

// A skin uses 370 x 380 pixels; anything needing more than this is no skin.
constexpr int AllocationLimitMiB = 64;

} // namespace

QImage LoadPicture(const QString &path, QString *reason)
{
    if (!QFileInfo(path).isFile()) {
        if (reason)
            *reason = QStringLiteral("no such file");
        return {};
    }
    QImageReader reader(path);
    reader.setDecideFormatFromContent(true);
    reader.setAutoTransform(false);
    reader.setAllocationLimit(AllocationLimitMiB);
    QImage picture = reader.read();
    if (picture.isNull() && reason)
        *reason = reader.errorString();
    return picture;
}
