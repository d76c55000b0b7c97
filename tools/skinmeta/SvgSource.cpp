#include "SvgSource.h"

#include <QDomDocument>
#include <QHash>
#include <QRegularExpression>
#include <QTransform>

#include <cmath>

namespace {

// SVG starts every shape black-filled and unstroked.
struct Paint
{
    QColor fill = Qt::black;
    QColor stroke;
    double strokeWidth = 1;
};

struct SubPath
{
    QPolygonF points;
    bool closed = false;
};

// Curves are cut into straight pieces that stay within this many pixels of
// the true curve; the metafile keeps 1/16 pixel.
constexpr double Tolerance = 1.0 / 32;

int PiecesFor(double deviation)
{
    return std::clamp(int(std::ceil(std::sqrt(std::abs(deviation) * 0.75 / Tolerance))), 1, 256);
}

double DistanceToLine(QPointF p, QPointF a, QPointF b)
{
    const QPointF d = b - a;
    const double length = std::hypot(d.x(), d.y());
    if (length == 0)
        return std::hypot(p.x() - a.x(), p.y() - a.y());
    return std::abs(d.x() * (a.y() - p.y()) - d.y() * (a.x() - p.x())) / length;
}

class Reader
{
public:
    explicit Reader(MetafileDrawing &out)
        : out_(out)
    { }

    QString error;
    QHash<QString, QDomElement> ids;

    bool Walk(
        const QDomElement &element, const Paint &inherited, const QTransform &parent, int depth);

private:
    MetafileDrawing &out_;
    QTransform transform_; // of the shape being read
    double scale_ = 1; // how much it enlarges, for curves and pens

    bool Fail(const QDomNode &node, const QString &what)
    {
        if (error.isEmpty())
            error = QStringLiteral("line %1: %2").arg(node.lineNumber()).arg(what);
        return false;
    }
    bool Number(const QDomElement &e, const char *name, double &value, double fallback = 0);
    bool Style(const QDomElement &e, Paint &paint);
    bool Property(const QDomElement &e, const QString &name, const QString &value, Paint &paint);
    bool Transform(const QDomElement &e, QTransform &result);
    bool Points(const QDomElement &e, QPolygonF &points);
    bool Path(const QDomElement &e, QList<SubPath> &paths);
    QPolygonF Ellipse(double cx, double cy, double rx, double ry) const;
    QPolygonF RoundedRect(double x, double y, double w, double h, double rx, double ry) const;
    void Emit(const Paint &paint, const QList<SubPath> &paths);
};

// The numbers of an attribute, in SVG's loose syntax: "1.5-2", ".5.5", "1e3".
QList<double> Numbers(const QString &text, bool *ok)
{
    static const QRegularExpression number(
        QStringLiteral(R"([+-]?(?:\d+\.?\d*|\.\d+)(?:[eE][+-]?\d+)?)"));
    static const QRegularExpression separator(QStringLiteral(R"(^[\s,]*$)"));
    QList<double> values;
    qsizetype at = 0;
    *ok = true;
    for (auto it = number.globalMatch(text); it.hasNext();) {
        const QRegularExpressionMatch m = it.next();
        if (!separator.match(text.mid(at, m.capturedStart() - at)).hasMatch())
            *ok = false;
        values.append(m.captured().toDouble());
        at = m.capturedEnd();
    }
    if (!separator.match(text.mid(at)).hasMatch())
        *ok = false;
    return values;
}

bool Reader::Number(const QDomElement &e, const char *name, double &value, double fallback)
{
    QString text = e.attribute(QLatin1String(name)).trimmed();
    if (text.isEmpty()) {
        value = fallback;
        return true;
    }
    if (text.endsWith(QLatin1String("px")))
        text.chop(2);
    bool ok = false;
    value = text.toDouble(&ok);
    return ok
        || Fail(e,
            QStringLiteral("%1=\"%2\" is not a number of pixels").arg(QLatin1String(name), text));
}

bool Reader::Property(const QDomElement &e, const QString &name, const QString &value, Paint &paint)
{
    const QString v = value.trimmed();
    if (name == QLatin1String("fill") || name == QLatin1String("stroke")) {
        QColor color;
        if (v != QLatin1String("none")) {
            color = QColor::fromString(v);
            if (!color.isValid() || v.startsWith(QLatin1String("url")))
                return Fail(e, QStringLiteral("%1 \"%2\" is not a plain colour").arg(name, v));
        }
        (name == QLatin1String("fill") ? paint.fill : paint.stroke) = color;
        return true;
    }
    if (name == QLatin1String("stroke-width")) {
        bool ok = false;
        paint.strokeWidth = QString(v).remove(QLatin1String("px")).toDouble(&ok);
        return ok || Fail(e, QStringLiteral("stroke-width \"%1\"").arg(v));
    }
    if (name == QLatin1String("stroke-linejoin") || name == QLatin1String("stroke-linecap"))
        return v == QLatin1String("round")
            || Fail(e,
                QStringLiteral("%1 must be round: metafile pens have round ends and corners")
                    .arg(name));
    if (name == QLatin1String("fill-rule") || name == QLatin1String("clip-rule"))
        return v == QLatin1String("nonzero")
            || Fail(
                e, QStringLiteral("%1 must be nonzero; draw holes the other way round").arg(name));
    if (name.endsWith(QLatin1String("opacity")))
        return v.toDouble() == 1
            || Fail(e, QStringLiteral("a metafile has no transparency (%1)").arg(name));
    if (name == QLatin1String("shape-rendering") || name == QLatin1String("stroke-miterlimit"))
        return true; // no bearing on what is drawn here
    return Fail(e, QStringLiteral("%1 cannot be put into a metafile").arg(name));
}

bool Reader::Style(const QDomElement &e, Paint &paint)
{
    static const QStringList presentation = {
        QStringLiteral("fill"),
        QStringLiteral("stroke"),
        QStringLiteral("stroke-width"),
        QStringLiteral("stroke-linejoin"),
        QStringLiteral("stroke-linecap"),
        QStringLiteral("fill-rule"),
        QStringLiteral("opacity"),
        QStringLiteral("fill-opacity"),
        QStringLiteral("stroke-opacity"),
        QStringLiteral("stroke-dasharray"),
        QStringLiteral("filter"),
        QStringLiteral("mask"),
        QStringLiteral("clip-path"),
        QStringLiteral("font-family"),
        QStringLiteral("shape-rendering"),
    };
    for (const QString &name : presentation)
        if (e.hasAttribute(name) && !Property(e, name, e.attribute(name), paint))
            return false;
    for (const QString &item :
        e.attribute(QStringLiteral("style")).split(QLatin1Char(';'), Qt::SkipEmptyParts)) {
        const qsizetype colon = item.indexOf(QLatin1Char(':'));
        if (colon < 0)
            return Fail(e, QStringLiteral("style \"%1\"").arg(item));
        if (!Property(e, item.left(colon).trimmed(), item.mid(colon + 1), paint))
            return false;
    }
    return true;
}

bool Reader::Transform(const QDomElement &e, QTransform &result)
{
    static const QRegularExpression step(QStringLiteral(R"(\s*(\w+)\s*\(([^)]*)\)\s*,?)"));
    const QString text = e.attribute(QStringLiteral("transform"));
    result = QTransform();
    qsizetype at = 0;
    for (auto it = step.globalMatch(text); it.hasNext();) {
        const QRegularExpressionMatch m = it.next();
        if (m.capturedStart() != at)
            break;
        at = m.capturedEnd();
        bool ok = false;
        const QList<double> v = Numbers(m.captured(2), &ok);
        const QString name = m.captured(1);
        const qsizetype n = v.size();
        QTransform t;
        if (name == QLatin1String("translate") && (n == 1 || n == 2))
            t.translate(v[0], n == 2 ? v[1] : 0);
        else if (name == QLatin1String("scale") && (n == 1 || n == 2))
            t.scale(v[0], n == 2 ? v[1] : v[0]);
        else if (name == QLatin1String("rotate") && (n == 1 || n == 3))
            t.translate(n == 3 ? v[1] : 0, n == 3 ? v[2] : 0)
                .rotate(v[0])
                .translate(n == 3 ? -v[1] : 0, n == 3 ? -v[2] : 0);
        else if (name == QLatin1String("matrix") && n == 6)
            t = QTransform(v[0], v[1], v[2], v[3], v[4], v[5]);
        else
            ok = false;
        if (!ok)
            return Fail(e, QStringLiteral("transform \"%1\"").arg(m.captured().trimmed()));
        result = t * result; // the leftmost step is applied last
    }
    return at == text.size() || Fail(e, QStringLiteral("transform \"%1\"").arg(text));
}

bool Reader::Points(const QDomElement &e, QPolygonF &points)
{
    bool ok = false;
    const QList<double> v = Numbers(e.attribute(QStringLiteral("points")), &ok);
    if (!ok || v.size() % 2 || v.size() < 4)
        return Fail(e, QStringLiteral("points must be pairs of numbers"));
    for (qsizetype i = 0; i < v.size(); i += 2)
        points.append(QPointF(v[i], v[i + 1]));
    return true;
}

// How many numbers one step of a path command takes.
int ArgumentsOf(QChar command)
{
    switch (command.unicode()) {
    case 'M':
    case 'L':
    case 'T':
        return 2;
    case 'H':
    case 'V':
        return 1;
    case 'C':
        return 6;
    case 'S':
    case 'Q':
        return 4;
    default:
        return 0;
    }
}

bool Reader::Path(const QDomElement &e, QList<SubPath> &paths)
{
    static const QRegularExpression token(QStringLiteral(
        R"(([MmLlHhVvCcSsQqTtZz])|([+-]?(?:\d+\.?\d*|\.\d+)(?:[eE][+-]?\d+)?)|([\s,]+)|(.))"));
    QList<QChar> commands;
    QList<QList<double>> arguments;
    for (auto it = token.globalMatch(e.attribute(QStringLiteral("d"))); it.hasNext();) {
        const QRegularExpressionMatch m = it.next();
        if (!m.captured(1).isEmpty()) {
            commands.append(m.captured(1).at(0));
            arguments.append(QList<double>());
        } else if (!m.captured(2).isEmpty()) {
            if (commands.isEmpty())
                return Fail(e, QStringLiteral("path data must start with a command"));
            arguments.last().append(m.captured(2).toDouble());
        } else if (!m.captured(4).isEmpty()) {
            return Fail(e,
                QStringLiteral("path command \"%1\" cannot be put into a metafile")
                    .arg(m.captured(4)));
        }
    }

    QPointF current, start, lastControl;
    QChar previous;
    const auto flatten = [this, &paths](const QList<QPointF> &control) {
        double deviation = 0;
        for (qsizetype i = 1; i + 1 < control.size(); ++i)
            deviation
                = std::max(deviation, DistanceToLine(control[i], control.first(), control.last()));
        const int pieces = PiecesFor(deviation * scale_);
        for (int k = 1; k <= pieces; ++k) {
            const double t = double(k) / pieces, u = 1 - t;
            QPointF p;
            if (control.size() == 3)
                p = u * u * control[0] + 2 * u * t * control[1] + t * t * control[2];
            else
                p = u * u * u * control[0] + 3 * u * u * t * control[1] + 3 * u * t * t * control[2]
                    + t * t * t * control[3];
            paths.last().points.append(p);
        }
    };
    for (qsizetype c = 0; c < commands.size(); ++c) {
        const QChar command = commands[c];
        const QList<double> &v = arguments[c];
        const bool relative = command.isLower();
        const QChar kind = command.toUpper();
        const QPointF base = relative ? current : QPointF();
        const int width = ArgumentsOf(kind);
        if (kind == QLatin1Char('Z')) {
            if (!v.isEmpty() || paths.isEmpty())
                return Fail(e, QStringLiteral("misplaced Z in path data"));
            paths.last().closed = true;
            current = start;
            previous = kind;
            continue;
        }
        if (v.isEmpty() || v.size() % width)
            return Fail(
                e, QStringLiteral("path command %1 has the wrong count of numbers").arg(command));
        for (qsizetype i = 0; i < v.size(); i += width) {
            const QPointF at = relative ? current : QPointF();
            if (kind == QLatin1Char('M') && i == 0) {
                current = base + QPointF(v[0], v[1]);
                start = current;
                paths.append({QPolygonF {current}, false});
                previous = kind;
                continue;
            }
            if (paths.isEmpty() || (previous == QLatin1Char('Z'))) {
                if (paths.isEmpty())
                    return Fail(e, QStringLiteral("path data must start with M"));
                paths.append({QPolygonF {current}, false});
            }
            switch (kind.unicode()) {
            case 'M':
            case 'L':
                current = at + QPointF(v[i], v[i + 1]);
                paths.last().points.append(current);
                break;
            case 'H':
                current.setX((relative ? current.x() : 0) + v[i]);
                paths.last().points.append(current);
                break;
            case 'V':
                current.setY((relative ? current.y() : 0) + v[i]);
                paths.last().points.append(current);
                break;
            case 'C':
            case 'S': {
                QPointF first = at + QPointF(v[i], v[i + 1]);
                qsizetype k = i + 2;
                if (kind == QLatin1Char('S')) {
                    first = (previous == QLatin1Char('C') || previous == QLatin1Char('S'))
                        ? 2 * current - lastControl
                        : current;
                    k = i;
                }
                const QPointF second = at + QPointF(v[k], v[k + 1]);
                const QPointF end = at + QPointF(v[k + 2], v[k + 3]);
                flatten({current, first, second, end});
                lastControl = second;
                current = end;
                break;
            }
            case 'Q':
            case 'T': {
                QPointF control;
                QPointF end;
                if (kind == QLatin1Char('Q')) {
                    control = at + QPointF(v[i], v[i + 1]);
                    end = at + QPointF(v[i + 2], v[i + 3]);
                } else {
                    control = (previous == QLatin1Char('Q') || previous == QLatin1Char('T'))
                        ? 2 * current - lastControl
                        : current;
                    end = at + QPointF(v[i], v[i + 1]);
                }
                flatten({current, control, end});
                lastControl = control;
                current = end;
                break;
            }
            }
            previous = kind == QLatin1Char('M') ? QLatin1Char('L') : kind;
        }
        if (kind == QLatin1Char('M') && v.size() == 2)
            previous = kind;
    }
    return true;
}

QPolygonF Reader::Ellipse(double cx, double cy, double rx, double ry) const
{
    // Enough corners that no edge strays more than the tolerance from the
    // curve at the size it is drawn.
    const double r = std::max(rx, ry) * scale_;
    const int corners
        = r <= Tolerance ? 8 : std::max(12, int(std::ceil(M_PI / std::acos(1 - Tolerance / r))));
    QPolygonF ring;
    for (int i = 0; i < corners; ++i) {
        const double a = 2 * M_PI * i / corners;
        ring.append(QPointF(cx + rx * std::cos(a), cy + ry * std::sin(a)));
    }
    return ring;
}

QPolygonF Reader::RoundedRect(double x, double y, double w, double h, double rx, double ry) const
{
    if (rx <= 0 || ry <= 0)
        return QPolygonF(QRectF(x, y, w, h)).mid(0, 4);
    rx = std::min(rx, w / 2);
    ry = std::min(ry, h / 2);
    const QPolygonF corner = Ellipse(0, 0, rx, ry);
    const qsizetype quarter = corner.size() / 4;
    QPolygonF ring;
    // Clockwise on screen from the right end of the top edge, like a plain rectangle.
    const QPointF centres[4]
        = {{x + w - rx, y + ry}, {x + w - rx, y + h - ry}, {x + rx, y + h - ry}, {x + rx, y + ry}};
    for (int c = 0; c < 4; ++c)
        for (qsizetype i = 0; i <= quarter; ++i) {
            const double a = -M_PI / 2 + (c + double(i) / quarter) * M_PI / 2;
            ring.append(centres[c] + QPointF(rx * std::cos(a), ry * std::sin(a)));
        }
    return ring;
}

void Reader::Emit(const Paint &paint, const QList<SubPath> &paths)
{
    bool allClosed = true;
    QList<QPolygonF> rings;
    for (const SubPath &path : paths) {
        allClosed = allClosed && path.closed;
        if (path.points.size() >= 3)
            rings.append(transform_.map(path.points));
    }
    const double width = paint.strokeWidth * scale_;
    if (paint.fill.isValid() && !rings.isEmpty()) {
        MetaShape shape;
        shape.rings = rings;
        shape.fill = paint.fill;
        if (allClosed) {
            shape.stroke = paint.stroke;
            shape.strokeWidth = width;
        }
        out_.Add(shape);
        if (allClosed || !paint.stroke.isValid())
            return;
    }
    if (!paint.stroke.isValid())
        return;
    for (const SubPath &path : paths) {
        if (path.points.size() < 2)
            continue; // a lone move draws nothing
        MetaShape shape;
        shape.kind = path.closed ? MetaShape::Kind::Polygon : MetaShape::Kind::Polyline;
        shape.rings = {transform_.map(path.points)};
        shape.stroke = paint.stroke;
        shape.strokeWidth = width;
        out_.Add(shape);
    }
}

bool Reader::Walk(const QDomElement &e, const Paint &inherited, const QTransform &parent, int depth)
{
    const QString tag = e.tagName();
    if (tag == QLatin1String("defs") || tag == QLatin1String("title")
        || tag == QLatin1String("desc") || tag == QLatin1String("metadata"))
        return true;
    if (depth > 32)
        return Fail(e, QStringLiteral("<use> refers back to itself"));
    Paint paint = inherited;
    QTransform local;
    if (!Style(e, paint) || !Transform(e, local))
        return false;
    QTransform transform = local * parent;

    if (tag == QLatin1String("g") || tag == QLatin1String("svg")) {
        for (QDomElement child = e.firstChildElement(); !child.isNull();
             child = child.nextSiblingElement())
            if (!Walk(child, paint, transform, depth + 1))
                return false;
        return true;
    }
    if (tag == QLatin1String("use")) {
        QString target
            = e.attribute(QStringLiteral("href"), e.attribute(QStringLiteral("xlink:href")));
        if (!target.startsWith(QLatin1Char('#')) || !ids.contains(target.mid(1)))
            return Fail(e, QStringLiteral("<use> of an unknown \"%1\"").arg(target));
        double x, y;
        if (!Number(e, "x", x) || !Number(e, "y", y))
            return false;
        return Walk(ids.value(target.mid(1)), paint, QTransform::fromTranslate(x, y) * transform,
            depth + 1);
    }

    transform_ = transform;
    scale_ = std::sqrt(std::abs(transform.determinant()));
    QList<SubPath> paths;
    if (tag == QLatin1String("rect")) {
        double x, y, w, h, rx, ry;
        if (!Number(e, "x", x) || !Number(e, "y", y) || !Number(e, "width", w)
            || !Number(e, "height", h) || !Number(e, "rx", rx, -1) || !Number(e, "ry", ry, -1))
            return false;
        if (rx < 0)
            rx = std::max(ry, 0.0);
        if (ry < 0)
            ry = rx;
        paths.append({RoundedRect(x, y, w, h, rx, ry), true});
    } else if (tag == QLatin1String("circle") || tag == QLatin1String("ellipse")) {
        double cx, cy, rx, ry;
        const bool circle = tag == QLatin1String("circle");
        if (!Number(e, "cx", cx) || !Number(e, "cy", cy) || !Number(e, circle ? "r" : "rx", rx)
            || !Number(e, circle ? "r" : "ry", ry))
            return false;
        paths.append({Ellipse(cx, cy, rx, ry), true});
    } else if (tag == QLatin1String("polygon") || tag == QLatin1String("polyline")) {
        QPolygonF points;
        if (!Points(e, points))
            return false;
        paths.append({points, tag == QLatin1String("polygon")});
    } else if (tag == QLatin1String("line")) {
        double x1, y1, x2, y2;
        if (!Number(e, "x1", x1) || !Number(e, "y1", y1) || !Number(e, "x2", x2)
            || !Number(e, "y2", y2))
            return false;
        paths.append({QPolygonF {QPointF(x1, y1), QPointF(x2, y2)}, false});
        paint.fill = QColor(); // a line has no inside
    } else if (tag == QLatin1String("path")) {
        if (!Path(e, paths))
            return false;
    } else {
        return Fail(e, QStringLiteral("<%1> cannot be put into a metafile").arg(tag));
    }
    Emit(paint, paths);
    return true;
}

void CollectIds(const QDomElement &e, QHash<QString, QDomElement> &ids)
{
    if (e.hasAttribute(QStringLiteral("id")))
        ids.insert(e.attribute(QStringLiteral("id")), e);
    for (QDomElement child = e.firstChildElement(); !child.isNull();
         child = child.nextSiblingElement())
        CollectIds(child, ids);
}

} // namespace

std::optional<MetafileDrawing> ReadSvgSource(
    const QByteArray &svg, const QString &title, QString *error)
{
    QDomDocument document;
    QString message;
    int line = 0;
    if (!document.setContent(svg, &message, &line)) {
        if (error)
            *error = QStringLiteral("line %1: %2").arg(line).arg(message);
        return std::nullopt;
    }
    const QDomElement root = document.documentElement();
    bool ok = false;
    const QList<double> box = Numbers(root.attribute(QStringLiteral("viewBox")), &ok);
    const double width
        = QString(root.attribute(QStringLiteral("width"))).remove(QLatin1String("px")).toDouble();
    const double height
        = QString(root.attribute(QStringLiteral("height"))).remove(QLatin1String("px")).toDouble();
    if (root.tagName() != QLatin1String("svg") || width < 1 || height < 1
        || width != std::floor(width) || height != std::floor(height) || !ok
        || box != QList<double> {0, 0, width, height}) {
        if (error)
            *error = QStringLiteral("the drawing must be <svg> with a whole width and height in "
                                    "pixels and a viewBox of \"0 0 width height\"");
        return std::nullopt;
    }

    MetafileDrawing drawing(QSize(int(width), int(height)), title);
    Reader reader(drawing);
    CollectIds(root, reader.ids);
    if (!reader.Walk(root, Paint(), QTransform(), 0)) {
        if (error)
            *error = reader.error;
        return std::nullopt;
    }
    return drawing;
}
