// Reads the plain kind of SVG drawing a metafile skin is drawn in: shapes
// with flat fills and round-jointed strokes, groups, transforms and reuse.
// Anything a metafile cannot hold (gradients, transparency, text, even-odd
// holes, ...) is refused with its line, so the shipped skin never silently
// differs from its source.
#pragma once

#include "Metafile.h"

#include <optional>

std::optional<MetafileDrawing> ReadSvgSource(
    const QByteArray &svg, const QString &title, QString *error);
