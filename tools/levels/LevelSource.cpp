#include "LevelSource.h"

#include "files/CodePage.h"

#include <QHash>
#include <QRegularExpression>

#include <array>

namespace {

QString WithoutComment(const QString &line)
{
    const qsizetype hash = line.indexOf(QLatin1Char('#'));
    return (hash < 0 ? line : line.left(hash)).trimmed();
}

QString ShapeWords(Shape shape)
{
    switch (shape) {
    case Shape::Big:
        return QStringLiteral("the big block, 2 wide and 2 high");
    case Shape::Horizontal:
        return QStringLiteral("the wide block, 2 wide and 1 high");
    case Shape::Vertical:
        return QStringLiteral("a tall block, 1 wide and 2 high");
    case Shape::Small:
        return QStringLiteral("a small block, 1 cell");
    }
    return {};
}

// The name must survive the trip through the file's code page unchanged and
// print as it reads.
std::optional<QString> NameProblem(const QString &name)
{
    if (name.size() != LevelNameLength)
        return QStringLiteral("the name \"%1\" has %2 characters; a level name has exactly %3 "
                              "(pad it with spaces inside the quotes)")
            .arg(name, QString::number(name.size()), QString::number(LevelNameLength));
    for (const QChar character : name) {
        const bool representable = AnsiCode(character) != '?' || character == QLatin1Char('?');
        if (!representable || character.unicode() < 32 || character.unicode() == 127)
            return QStringLiteral("the name \"%1\" holds a character the level file cannot store")
                .arg(name);
    }
    return std::nullopt;
}

// Reads the five rows into a layout, or says what is wrong with them.
// `lines` are the source line numbers of the rows.
std::optional<SourceError> ReadDrawing(const std::array<QString, BoardRows> &rows,
    const std::array<int, BoardRows> &lines, Layout &codes)
{
    struct Seen
    {
        int cells = 0;
        int top = BoardRows, left = BoardCols, bottom = -1, right = -1;
        int firstLine = 0;
    };
    std::array<Seen, PieceCount> seen {};
    for (int row = 0; row < BoardRows; ++row)
        for (int col = 0; col < BoardCols; ++col) {
            const QChar mark = rows[row][col];
            if (mark == QLatin1Char('.'))
                continue;
            Seen &block = seen[mark.digitValue()];
            if (block.cells++ == 0)
                block.firstLine = lines[row];
            block.top = std::min(block.top, row);
            block.left = std::min(block.left, col);
            block.bottom = std::max(block.bottom, row);
            block.right = std::max(block.right, col);
        }
    for (int16_t piece = 0; piece < PieceCount; ++piece) {
        const Seen &block = seen[piece];
        const Shape shape = ShapeOf(piece);
        if (block.cells == 0)
            return SourceError {
                lines[0], QStringLiteral("block %1 is missing from the drawing").arg(piece)};
        const int width = block.right - block.left + 1, height = block.bottom - block.top + 1;
        if (width != ShapeWidth(shape) || height != ShapeHeight(shape)
            || block.cells != width * height)
            return SourceError {block.firstLine,
                QStringLiteral("the cells marked %1 do not form %2")
                    .arg(piece)
                    .arg(ShapeWords(shape))};
        codes[piece] = static_cast<int16_t>(block.top * 10 + block.left);
    }
    // Ten blocks of the right shapes leave exactly two free cells, so this
    // only guards against a change in the rules.
    const std::string problem = CheckLayout(codes);
    if (!problem.empty())
        return SourceError {lines[0], QString::fromStdString(problem)};
    return std::nullopt;
}

} // namespace

std::optional<QString> NameOfLine(const QString &line)
{
    static const QRegularExpression pattern(QStringLiteral("^\\s*name\\s+\"([^\"]*)\"\\s*(#.*)?$"));
    const QRegularExpressionMatch match = pattern.match(line);
    if (!match.hasMatch())
        return std::nullopt;
    return match.captured(1);
}

ParsedSource ParseLevelSource(const QString &text)
{
    static const QRegularExpression drawingRow(QStringLiteral("^[0-9.]{4}$"));
    ParsedSource source;
    const QStringList lines = text.split(QLatin1Char('\n'));
    source.lineCount = static_cast<int>(lines.size());
    auto fail = [&](int line, const QString &message) {
        source.error = SourceError {line, message};
        return source;
    };

    int number = 0;
    while (number < lines.size()) {
        const QString &nameLine = lines[number++];
        const QString content = WithoutComment(nameLine);
        if (content.isEmpty())
            continue;
        const std::optional<QString> name = NameOfLine(nameLine);
        if (!name)
            return fail(number,
                QStringLiteral("expected a line name \"...\" to start a level, found \"%1\"")
                    .arg(content));
        if (const std::optional<QString> problem = NameProblem(*name))
            return fail(number, *problem);

        SourceLevel level;
        level.line = number;
        level.record.levelName = *name;
        std::array<QString, BoardRows> rows;
        std::array<int, BoardRows> rowLines {};
        for (int row = 0; row < BoardRows; ++row) {
            QString rowText;
            while (number < lines.size() && (rowText = WithoutComment(lines[number])).isEmpty())
                ++number;
            if (number == lines.size())
                return fail(number,
                    QStringLiteral("the drawing of \"%1\" stops after %2 of %3 rows")
                        .arg(*name, QString::number(row), QString::number(BoardRows)));
            ++number;
            if (!drawingRow.match(rowText).hasMatch())
                return fail(number,
                    QStringLiteral("a drawing row has four characters, each 0 to "
                                   "9 or '.', not \"%1\"")
                        .arg(rowText));
            rows[row] = rowText;
            rowLines[row] = number;
        }
        if (std::optional<SourceError> error = ReadDrawing(rows, rowLines, level.record.codes)) {
            error->message = QStringLiteral("\"%1\": %2").arg(*name, error->message);
            source.error = error;
            return source;
        }
        source.levels.append(level);
    }
    return source;
}

std::optional<SourceError> CheckPack(const ParsedSource &source, const StateSpace &space)
{
    if (source.error)
        return source.error;
    QHash<QString, int> names;
    QHash<PositionKey, int> positions;
    for (qsizetype i = 0; i < source.levels.size(); ++i) {
        const SourceLevel &level = source.levels[i];
        const int number = static_cast<int>(i) + 1;
        const QString &name = level.record.levelName;
        if (const int other = names.value(name); other != 0)
            return SourceError {level.line,
                QStringLiteral("level %1 has the name \"%2\" of level %3")
                    .arg(QString::number(number), name, QString::number(other))};
        names.insert(name, number);
        const PositionKey key = MirrorFreeKey(KeyOf(level.record.codes));
        if (const int other = positions.value(key); other != 0)
            return SourceError {level.line,
                QStringLiteral("level %1 \"%2\" repeats level %3 (same blocks, or "
                               "its mirror image)")
                    .arg(QString::number(number), name, QString::number(other))};
        positions.insert(key, number);
        if (!space.StepsToSolve(level.record.codes))
            return SourceError {level.line,
                QStringLiteral("level %1 \"%2\" cannot be solved")
                    .arg(QString::number(number), name)};
    }
    if (source.levels.size() != LevelCount)
        return SourceError {source.lineCount,
            QStringLiteral("the source holds %1 levels; the pack has exactly %2")
                .arg(source.levels.size())
                .arg(int(LevelCount))};
    return std::nullopt;
}

QStringList DrawLayout(const Layout &codes)
{
    QStringList rows(BoardRows, QString(BoardCols, QLatin1Char('.')));
    for (int16_t piece = 0; piece < PieceCount; ++piece) {
        const Shape shape = ShapeOf(piece);
        const int row = codes[piece] / 10, col = codes[piece] % 10;
        for (int r = row; r < row + ShapeHeight(shape); ++r)
            for (int c = col; c < col + ShapeWidth(shape); ++c)
                rows[r][c] = QLatin1Char(char('0' + piece));
    }
    return rows;
}
