// The search works on cells numbered row * 4 + col and on "slots" that are
// the block numbers: slot 0 the big block, 1 the wide one, 2 to 5 the tall
// ones, 6 to 9 the small ones. A board built from a layout keeps the player's
// block numbers in its slots; one decoded from a key or a position number
// numbers the blocks of a shape in reading order. Either way the slides are
// the same, so one move generator serves the searches and the replies in
// block numbers.
//
// Positions are numbered without any hashing: the four tall blocks, the big
// one and the wide one leave exactly six cells, and any two of those six may
// be the free ones, so a position is its arrangement of the six larger blocks
// (one of 4392) times fifteen, plus which pair of the six cells is free. The
// searches then keep everything in flat arrays indexed by that number.
#include "Solver.h"

#include <algorithm>
#include <array>
#include <bit>

namespace {

constexpr int CellCount = BoardRows * BoardCols;
constexpr uint32_t AllCells = (uint32_t(1) << CellCount) - 1;
constexpr int CellOfGoal = 3 * BoardCols + 1; // the big block's top-left when solved
constexpr int RestCells = 6; // left to the small blocks and the free cells
constexpr int FreePairs = 15; // ways to choose the two free cells among them

// Shape indices follow the Shape enum; key codes are one more, so that 0 can
// mean "no block starts here".
constexpr int BigShape = int(Shape::Big), WideShape = int(Shape::Horizontal),
              TallShape = int(Shape::Vertical), SmallShape = int(Shape::Small);
constexpr std::array<int, PieceCount> SlotShape = {0, 1, 2, 2, 2, 2, 3, 3, 3, 3};
constexpr std::array<int, 4> FirstSlot = {0, 1, 2, 6};
constexpr std::array<int, 4> EndSlot = {1, 2, 6, 10};
constexpr std::array<int, 4> Widths = {2, 2, 1, 1};
constexpr std::array<int, 4> Heights = {2, 1, 2, 1};

enum Direction { Up, Down, Left, Right };

struct Tables
{
    // The cells a shape covers with its top-left cell here; 0 when that would
    // leave the board.
    std::array<std::array<uint32_t, CellCount>, 4> footprint {};
    // The top-left cell after a one-cell shift, or -1 when the shape would
    // leave the board.
    std::array<std::array<std::array<int8_t, 4>, CellCount>, 4> next {};
};

constexpr Tables MakeTables()
{
    Tables tables;
    for (int shape = 0; shape < 4; ++shape) {
        const int w = Widths[shape], h = Heights[shape];
        for (int cell = 0; cell < CellCount; ++cell) {
            const int row = cell / BoardCols, col = cell % BoardCols;
            const bool fits = row + h <= BoardRows && col + w <= BoardCols;
            uint32_t mask = 0;
            if (fits)
                for (int r = row; r < row + h; ++r)
                    for (int c = col; c < col + w; ++c)
                        mask |= uint32_t(1) << (r * BoardCols + c);
            tables.footprint[shape][cell] = mask;
            auto &next = tables.next[shape][cell];
            next[Up] = int8_t(fits && row > 0 ? cell - BoardCols : -1);
            next[Down] = int8_t(fits && row + h < BoardRows ? cell + BoardCols : -1);
            next[Left] = int8_t(fits && col > 0 ? cell - 1 : -1);
            next[Right] = int8_t(fits && col + w < BoardCols ? cell + 1 : -1);
        }
    }
    return tables;
}

constexpr Tables Shapes = MakeTables();

constexpr PositionKey ShapeBits(int shape, int cell)
{
    return PositionKey(shape + 1) << (3 * cell);
}

int CellOfCode(int16_t code)
{
    return code / 10 * BoardCols + code % 10;
}

int16_t CodeOfCell(int cell)
{
    return static_cast<int16_t>(cell / BoardCols * 10 + cell % BoardCols);
}

Cell CellAt(int cell)
{
    return {static_cast<int16_t>(cell % BoardCols), static_cast<int16_t>(cell / BoardCols)};
}

Move MoveOf(int slot, int from, int to)
{
    return {static_cast<int16_t>(slot), CellAt(from), CellAt(to)};
}

struct Board
{
    std::array<uint8_t, PieceCount> cell {}; // top-left cell of each slot
    uint32_t occupied = 0;
};

Board BoardOfLayout(const Layout &codes)
{
    Board board;
    for (int slot = 0; slot < PieceCount; ++slot) {
        board.cell[slot] = static_cast<uint8_t>(CellOfCode(codes[slot]));
        board.occupied |= Shapes.footprint[SlotShape[slot]][board.cell[slot]];
    }
    return board;
}

PositionKey KeyOfBoard(const Board &board)
{
    PositionKey key = 0;
    for (int slot = 0; slot < PieceCount; ++slot)
        key |= ShapeBits(SlotShape[slot], board.cell[slot]);
    return key;
}

// Checks everything, since keys come from callers too.
std::optional<Board> BoardOfKey(PositionKey key)
{
    if (key >> (3 * CellCount) != 0)
        return std::nullopt;
    std::array<int, 4> nextSlot = FirstSlot;
    Board board;
    for (int cell = 0; cell < CellCount; ++cell) {
        const int code = static_cast<int>(key >> (3 * cell) & 7);
        if (code == 0)
            continue;
        const int shape = code - 1;
        if (shape > SmallShape)
            return std::nullopt;
        const uint32_t mask = Shapes.footprint[shape][cell];
        if (nextSlot[shape] == EndSlot[shape] || mask == 0 || (mask & board.occupied))
            return std::nullopt;
        board.occupied |= mask;
        board.cell[nextSlot[shape]++] = static_cast<uint8_t>(cell);
    }
    if (nextSlot != EndSlot)
        return std::nullopt;
    return board;
}

bool IsSolvedBoard(const Board &board)
{
    return board.cell[0] == CellOfGoal;
}

// The block on the far side of a free cell, seen from it against the
// direction of the slide: the only blocks that can slide that way into it.
struct Approach
{
    std::array<std::array<int8_t, 4>, CellCount> from {};
};

constexpr Approach MakeApproach()
{
    Approach approach;
    for (int cell = 0; cell < CellCount; ++cell) {
        const int row = cell / BoardCols, col = cell % BoardCols;
        approach.from[cell][Up] = int8_t(row + 1 < BoardRows ? cell + BoardCols : -1);
        approach.from[cell][Down] = int8_t(row > 0 ? cell - BoardCols : -1);
        approach.from[cell][Left] = int8_t(col + 1 < BoardCols ? cell + 1 : -1);
        approach.from[cell][Right] = int8_t(col > 0 ? cell - 1 : -1);
    }
    return approach;
}

constexpr Approach Approaches = MakeApproach();

// The slot covering each cell; anything for a free cell.
using Owners = std::array<int8_t, CellCount>;

void MarkOwner(Owners &owner, int slot, int cell)
{
    for (uint32_t cells = Shapes.footprint[SlotShape[slot]][cell]; cells != 0; cells &= cells - 1)
        owner[std::countr_zero(cells)] = static_cast<int8_t>(slot);
}

// Calls visit(slot, fromCell, toCell) for every single step, stopping early
// when it returns true. Returns whether it stopped. Every slide ends on at
// least one of the two free cells, so only the blocks next to them are tried.
template<class Visit>
bool ForEachSlide(const Board &board, const Owners &owner, Visit &&visit)
{
    uint64_t tried = 0; // bit slot * 4 + direction: a wide block can border both free cells
    for (uint32_t freeCells = ~board.occupied & AllCells; freeCells != 0;
         freeCells &= freeCells - 1) {
        const int freeCell = std::countr_zero(freeCells);
        for (int direction = Up; direction <= Right; ++direction) {
            const int neighbour = Approaches.from[freeCell][direction];
            if (neighbour < 0 || !(board.occupied >> neighbour & 1))
                continue;
            const int slot = owner[neighbour];
            const uint64_t bit = uint64_t(1) << (slot * 4 + direction);
            if (tried & bit)
                continue;
            tried |= bit;
            const int shape = SlotShape[slot];
            const int from = board.cell[slot];
            const uint32_t others = board.occupied & ~Shapes.footprint[shape][from];
            // A slide of several cells is one step; it stops at the first
            // block or the edge.
            for (int at = Shapes.next[shape][from][direction]; at >= 0;
                 at = Shapes.next[shape][at][direction]) {
                if (Shapes.footprint[shape][at] & others)
                    break;
                if (visit(slot, from, at))
                    return true;
            }
        }
    }
    return false;
}

template<class Visit>
bool ForEachSlide(const Board &board, Visit &&visit)
{
    Owners owner;
    for (int slot = 0; slot < PieceCount; ++slot)
        MarkOwner(owner, slot, board.cell[slot]);
    return ForEachSlide(board, owner, visit);
}

Board Slid(Board board, int slot, int from, int to)
{
    const int shape = SlotShape[slot];
    board.occupied
        = (board.occupied & ~Shapes.footprint[shape][from]) | Shapes.footprint[shape][to];
    board.cell[slot] = static_cast<uint8_t>(to);
    return board;
}

// What the numbering needs of a board. Small enough to stay in registers, so
// the searches can number a neighbour without building its board.
struct Outline
{
    uint32_t tall; // top-left cells of the tall blocks
    uint32_t occupied;
    int big, wide; // top-left cells
};

Outline OutlineOf(const Board &board)
{
    uint32_t tall = 0;
    for (int slot = FirstSlot[TallShape]; slot < EndSlot[TallShape]; ++slot)
        tall |= uint32_t(1) << board.cell[slot];
    return {tall, board.occupied, board.cell[0], board.cell[1]};
}

Outline Slid(Outline outline, int slot, int from, int to)
{
    const int shape = SlotShape[slot];
    outline.occupied
        = (outline.occupied & ~Shapes.footprint[shape][from]) | Shapes.footprint[shape][to];
    if (shape == TallShape)
        outline.tall ^= (uint32_t(1) << from) | (uint32_t(1) << to);
    else if (shape == BigShape)
        outline.big = to;
    else if (shape == WideShape)
        outline.wide = to;
    return outline;
}

// Without a target flag the compiler turns std::popcount into a library call.
constexpr int BitCount(uint32_t bits)
{
    bits = bits - ((bits >> 1) & 0x55555555u);
    bits = (bits & 0x33333333u) + ((bits >> 2) & 0x33333333u);
    return static_cast<int>((((bits + (bits >> 4)) & 0x0F0F0F0Fu) * 0x01010101u) >> 24);
}

// Binomial coefficients n choose k for k up to 4, enough to rank a set of
// four of the cells that may hold a tall block's top-left cell.
constexpr int TallCells = 16; // rows 0 to 3

constexpr std::array<std::array<int16_t, 5>, TallCells> MakeBinomials()
{
    std::array<std::array<int16_t, 5>, TallCells> choose {};
    for (int n = 0; n < TallCells; ++n) {
        choose[n][0] = 1;
        for (int k = 1; k <= 4; ++k)
            choose[n][k] = int16_t(n == 0 ? 0 : choose[n - 1][k - 1] + choose[n - 1][k]);
    }
    return choose;
}

constexpr auto Choose = MakeBinomials();

// The numbering of positions described at the top of the file.
class Numbering
{
public:
    static const Numbering &Get()
    {
        static const Numbering numbering;
        return numbering;
    }

    int32_t Count() const { return static_cast<int32_t>(arrangements_.size()) * FreePairs; }

    int32_t IndexOf(const Outline &outline) const
    {
        return IndexWithin(ArrangementOf(outline), outline.occupied);
    }

    // A small block's slide keeps the arrangement: only the free pair changes.
    int32_t IndexWithin(int32_t arrangement, uint32_t occupied) const
    {
        const uint32_t rest = arrangements_[arrangement].rest;
        const uint32_t freeCells = ~occupied & AllCells;
        const uint32_t first = freeCells & (0u - freeCells);
        const uint32_t second = freeCells ^ first;
        const int i = BitCount(rest & (first - 1));
        const int j = BitCount(rest & (second - 1));
        return arrangement * FreePairs + pairOf_[i][j];
    }

    int32_t IndexOf(const Board &board) const { return IndexOf(OutlineOf(board)); }

    // The number a step from position `index` leads to, `next` being the
    // outline after it.
    int32_t IndexAfter(int32_t index, int slot, const Outline &next) const
    {
        return SlotShape[slot] == SmallShape ? IndexWithin(index / FreePairs, next.occupied)
                                             : IndexOf(next);
    }

    Board BoardAt(int32_t index) const
    {
        const Arrangement &arrangement = arrangements_[index / FreePairs];
        const auto [i, j] = pairs_[index % FreePairs];
        Board board;
        int slot = LayLargerBlocks(arrangement, board);
        board.occupied = AllCells;
        for (int nth = 0; nth < RestCells; ++nth) {
            const int cell = arrangement.restCell[nth];
            if (nth == i || nth == j)
                board.occupied &= ~(uint32_t(1) << cell);
            else
                board.cell[slot++] = static_cast<uint8_t>(cell);
        }
        return board;
    }

    // Every position in number order, as visit(index, board, owners). The
    // larger blocks are laid out once per arrangement, only the small ones
    // for each position.
    template<class Visit>
    void ForEachPosition(Visit &&visit) const
    {
        int32_t index = 0;
        for (const Arrangement &arrangement : arrangements_) {
            Board board;
            Owners owner;
            int slot = LayLargerBlocks(arrangement, board);
            for (slot = 0; slot < EndSlot[TallShape]; ++slot)
                MarkOwner(owner, slot, board.cell[slot]);
            const auto &rest = arrangement.restCell;
            for (const auto &[i, j] : pairs_) {
                slot = FirstSlot[SmallShape];
                for (int k = 0; k < RestCells; ++k)
                    if (k != i && k != j) {
                        board.cell[slot] = rest[k];
                        owner[rest[k]] = static_cast<int8_t>(slot++);
                    }
                board.occupied = AllCells & ~((uint32_t(1) << rest[i]) | (uint32_t(1) << rest[j]));
                visit(index++, board, owner);
            }
        }
    }

private:
    // The tall blocks' top-left cells lie in rows 0 to 3, four of these
    // sixteen; a set of them is numbered by its rank among all such sets in
    // increasing order of their bits (the combinatorial number system).
    static constexpr int TallSets = Choose[TallCells - 1][4] + Choose[TallCells - 1][3];
    // Top-left cells of the big block, as columns 0 to 2 of rows 0 to 3.
    static constexpr int BigSpots = 12;
    static int Spot(int cell) { return cell - cell / BoardCols; }

    static int RankOfTallSet(uint32_t tall)
    {
        int rank = 0;
        for (int k = 1; tall != 0; tall &= tall - 1, ++k)
            rank += Choose[std::countr_zero(tall)][k];
        return rank;
    }

    struct Arrangement
    {
        uint32_t tall; // top-left cells of the tall blocks
        uint32_t rest; // the six cells no larger block covers
        std::array<uint8_t, RestCells> restCell; // the same, in increasing order
        uint8_t big, wide;
    };

    // The arrangements with one set of tall blocks and one place of the big
    // block are numbered consecutively, in the order of the wide block's place.
    struct WithBig
    {
        int16_t first = 0;
        uint16_t wideSpots = 0; // bit per place of the wide block
    };

    int32_t ArrangementOf(const Outline &outline) const
    {
        const int tallSet = tallSetOf_[RankOfTallSet(outline.tall)];
        const WithBig &withBig = withBig_[tallSet * BigSpots + Spot(outline.big)];
        return withBig.first + BitCount(withBig.wideSpots & ((1u << Spot(outline.wide)) - 1));
    }

    // The outline once a larger block has stepped from the arrangement to `to`.
    static Outline OutlineAfter(
        const Arrangement &arrangement, int shape, int from, int to, uint32_t occupied)
    {
        Outline outline {arrangement.tall, occupied, arrangement.big, arrangement.wide};
        if (shape == TallShape)
            outline.tall ^= (uint32_t(1) << from) | (uint32_t(1) << to);
        else if (shape == BigShape)
            outline.big = to;
        else
            outline.wide = to;
        return outline;
    }

    // Puts the big, the wide and the tall blocks of an arrangement on the
    // board; returns the first slot left for the small ones.
    static int LayLargerBlocks(const Arrangement &arrangement, Board &board)
    {
        board.cell[0] = arrangement.big;
        board.cell[1] = arrangement.wide;
        int slot = FirstSlot[TallShape];
        for (uint32_t tall = arrangement.tall; tall != 0; tall &= tall - 1)
            board.cell[slot++] = static_cast<uint8_t>(std::countr_zero(tall));
        return slot;
    }

    // Arrangements in increasing order of the tall set's bits, then of the
    // big block's cell, then of the wide block's.
    Numbering()
    {
        tallSetOf_.fill(-1);
        arrangements_.reserve(4392);
        withBig_.reserve(886 * BigSpots);
        int tallSets = 0;
        for (int a = 3; a < TallCells; ++a)
            for (int b = 2; b < a; ++b)
                for (int c = 1; c < b; ++c)
                    for (int d = 0; d < c; ++d) {
                        const uint32_t tall = (uint32_t(1) << a) | (uint32_t(1) << b)
                            | (uint32_t(1) << c) | (uint32_t(1) << d);
                        uint32_t cover = 0;
                        bool overlap = false;
                        for (const int cell : {a, b, c, d}) {
                            const uint32_t mask = Shapes.footprint[TallShape][cell];
                            overlap = overlap || (cover & mask);
                            cover |= mask;
                        }
                        if (!overlap) {
                            tallSetOf_[RankOfTallSet(tall)] = static_cast<int16_t>(tallSets++);
                            AddArrangements(tall, cover);
                        }
                    }
        int pair = 0;
        for (int i = 0; i < RestCells; ++i)
            for (int j = i + 1; j < RestCells; ++j) {
                pairOf_[i][j] = static_cast<int8_t>(pair);
                pairs_[pair++] = {i, j};
            }
    }

    void AddArrangements(uint32_t tall, uint32_t cover)
    {
        for (int big = 0; big < CellCount; ++big) {
            const uint32_t bigMask = Shapes.footprint[BigShape][big];
            if (bigMask == 0)
                continue;
            WithBig &withBig = withBig_.emplace_back();
            withBig.first = static_cast<int16_t>(arrangements_.size());
            if (bigMask & cover)
                continue;
            for (int wide = 0; wide < CellCount; ++wide) {
                const uint32_t wideMask = Shapes.footprint[WideShape][wide];
                if (wideMask == 0 || (wideMask & (cover | bigMask)))
                    continue;
                withBig.wideSpots |= uint16_t(1u << Spot(wide));
                Arrangement &arrangement = arrangements_.emplace_back();
                arrangement.tall = tall;
                arrangement.rest = AllCells & ~(cover | bigMask | wideMask);
                int nth = 0;
                for (uint32_t rest = arrangement.rest; rest != 0; rest &= rest - 1)
                    arrangement.restCell[nth++] = static_cast<uint8_t>(std::countr_zero(rest));
                arrangement.big = static_cast<uint8_t>(big);
                arrangement.wide = static_cast<uint8_t>(wide);
            }
        }
    }

    std::array<int16_t, TallSets> tallSetOf_ {}; // by rank; -1 where tall blocks overlap
    std::vector<WithBig> withBig_; // tall set * BigSpots + big block's place
    std::vector<Arrangement> arrangements_;
    std::array<std::array<int8_t, RestCells>, RestCells> pairOf_ {};
    std::array<std::pair<int, int>, FreePairs> pairs_ {};
};

// Turns steps between positions into steps of the player's blocks: the block
// of the right shape standing on the step's starting cell is the one moved.
struct CanonicalStep
{
    uint8_t shape = 0, from = 0, to = 0;
};

Solution InBlockNumbers(const Layout &start, const std::vector<CanonicalStep> &steps)
{
    Solution solution;
    solution.moves.reserve(steps.size());
    Board board = BoardOfLayout(start);
    for (const CanonicalStep &step : steps) {
        int slot = FirstSlot[step.shape];
        while (board.cell[slot] != step.from)
            ++slot;
        solution.moves.push_back(MoveOf(slot, step.from, step.to));
        board = Slid(board, slot, step.from, step.to);
    }
    return solution;
}

} // namespace

PositionKey KeyOf(const Layout &codes)
{
    if (!CheckLayout(codes).empty())
        return 0;
    return KeyOfBoard(BoardOfLayout(codes));
}

PositionKey MirrorKey(PositionKey key)
{
    PositionKey mirrored = 0;
    for (int cell = 0; cell < CellCount; ++cell) {
        const int code = static_cast<int>(key >> (3 * cell) & 7);
        if (code == 0)
            continue;
        const int row = cell / BoardCols, col = cell % BoardCols;
        const int mirroredCol = BoardCols - col - Widths[(code - 1) & 3];
        mirrored |= ShapeBits(code - 1, row * BoardCols + mirroredCol);
    }
    return mirrored;
}

PositionKey MirrorFreeKey(PositionKey key)
{
    return std::min(key, MirrorKey(key));
}

std::optional<Layout> LayoutOfKey(PositionKey key)
{
    const std::optional<Board> board = BoardOfKey(key);
    if (!board)
        return std::nullopt;
    Layout codes {};
    for (int slot = 0; slot < PieceCount; ++slot)
        codes[slot] = CodeOfCell(board->cell[slot]);
    return codes;
}

std::vector<Move> LegalMoves(const Layout &codes)
{
    std::vector<Move> moves;
    if (!CheckLayout(codes).empty())
        return moves;
    ForEachSlide(BoardOfLayout(codes), [&](int slot, int from, int to) {
        moves.push_back(MoveOf(slot, from, to));
        return false;
    });
    return moves;
}

Layout ApplyMove(Layout codes, const Move &move)
{
    codes[move.piece] = CodeOf(move.to);
    return codes;
}

std::optional<Solution> Solve(const Layout &start)
{
    if (!CheckLayout(start).empty())
        return std::nullopt;
    const Board startBoard = BoardOfLayout(start);
    if (IsSolvedBoard(startBoard))
        return Solution {};

    const Numbering &numbering = Numbering::Get();
    // Every position seen remembers the step that first reached it; the
    // queue holds them in the order they were seen.
    constexpr int32_t Unseen = -1, Start = -2;
    std::vector<int32_t> parent(numbering.Count(), Unseen);
    std::vector<CanonicalStep> stepTo(numbering.Count());
    std::vector<int32_t> queue;
    queue.reserve(numbering.Count());
    const int32_t startIndex = numbering.IndexOf(startBoard);
    parent[startIndex] = Start;
    queue.push_back(startIndex);

    int32_t goal = -1;
    for (size_t head = 0; head < queue.size() && goal < 0; ++head) {
        const int32_t at = queue[head];
        const Board board = numbering.BoardAt(at);
        const Outline outline = OutlineOf(board);
        ForEachSlide(board, [&](int slot, int from, int to) {
            const Outline next = Slid(outline, slot, from, to);
            const int32_t index = numbering.IndexAfter(at, slot, next);
            if (parent[index] != Unseen)
                return false;
            parent[index] = at;
            stepTo[index] = {static_cast<uint8_t>(SlotShape[slot]), static_cast<uint8_t>(from),
                static_cast<uint8_t>(to)};
            queue.push_back(index);
            if (next.big == CellOfGoal)
                goal = index;
            return goal >= 0;
        });
    }
    if (goal < 0)
        return std::nullopt;

    std::vector<CanonicalStep> steps;
    for (int32_t at = goal; parent[at] != Start; at = parent[at])
        steps.push_back(stepTo[at]);
    std::reverse(steps.begin(), steps.end());
    return InBlockNumbers(start, steps);
}

StateSpace::StateSpace()
{
    const Numbering &numbering = Numbering::Get();
    const int32_t count = numbering.Count();

    // The moves, once, as lists of neighbours; both searches below only
    // follow them.
    firstNeighbour_.resize(size_t(count) + 1);
    neighbours_.reserve(size_t(count) * 4);
    std::vector<int32_t> solved;
    numbering.ForEachPosition([&](int32_t index, const Board &board, const Owners &owner) {
        firstNeighbour_[index] = static_cast<int32_t>(neighbours_.size());
        if (IsSolvedBoard(board))
            solved.push_back(index);
        const Outline outline = OutlineOf(board);
        ForEachSlide(board, owner, [&](int slot, int from, int to) {
            neighbours_.push_back(numbering.IndexAfter(index, slot, Slid(outline, slot, from, to)));
            return false;
        });
    });
    firstNeighbour_[count] = static_cast<int32_t>(neighbours_.size());

    // Steps can be taken back, so the distance to the nearest solved position
    // is a search outwards from all of them at once.
    distance_.assign(count, Unsolvable);
    std::vector<int32_t> queue = solved;
    for (const int32_t index : solved)
        distance_[index] = 0;
    for (size_t head = 0; head < queue.size(); ++head) {
        const auto nextDistance = static_cast<int16_t>(distance_[queue[head]] + 1);
        for (const int32_t next : NeighboursAt(queue[head]))
            if (distance_[next] == Unsolvable) {
                distance_[next] = nextDistance;
                queue.push_back(next);
            }
    }
    maxDistance_ = queue.empty() ? 0 : distance_[queue.back()];
}

PositionKey StateSpace::KeyAt(int index) const
{
    return KeyOfBoard(Numbering::Get().BoardAt(index));
}

int PositionNumber(const Layout &codes)
{
    if (!CheckLayout(codes).empty())
        return StateSpace::NoPosition;
    return Numbering::Get().IndexOf(BoardOfLayout(codes));
}

std::span<const int32_t> StateSpace::NeighboursAt(int index) const
{
    return {neighbours_.data() + firstNeighbour_[index],
        neighbours_.data() + firstNeighbour_[index + 1]};
}

std::optional<int> StateSpace::StepsToSolve(const Layout &codes) const
{
    const int number = PositionNumber(codes);
    if (number == NoPosition || distance_[number] == Unsolvable)
        return std::nullopt;
    return distance_[number];
}
