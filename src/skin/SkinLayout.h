// Where each picture of the board lies in a skin picture, in the picture's
// pixels. The inside from (20, 20) is a grid of 60-pixel cells, 4 across and
// 5 down like the board; frame, title and banner lie around it.
#pragma once

#include <array>
#include <cstdint>

struct SkinRect
{
    int16_t x, y, width, height;
};

enum { SkinWidth = 370, SkinHeight = 380 };

// The images that receive a cut: the frame's five parts and the banner,
// then the blocks.
enum class SkinTarget { UpFrame, LeftFrame, RightFrame, Exit, Title, Cong, Piece };

struct SkinPoint
{
    int16_t x, y;
};

struct SkinArea
{
    SkinTarget target;
    int16_t piece; // the block number for block images, else -1
    SkinRect rect;
    // Where the frame's part stands in the window, in window pixels; the
    // banner and the blocks are placed by play.
    SkinPoint place;
};

// In the order a skin is applied. The four vertical bars go, from left to
// right in the picture, to blocks 2, 4, 3 and 5; the four small blocks share
// one picture.
inline constexpr std::array<SkinArea, 16> SkinAreas = {{
    {SkinTarget::UpFrame, -1, {0, 0, 280, 20}, {10, 10}},
    {SkinTarget::LeftFrame, -1, {0, 20, 20, 300}, {10, 30}},
    {SkinTarget::RightFrame, -1, {260, 20, 20, 300}, {270, 30}},
    {SkinTarget::Exit, -1, {0, 320, 280, 20}, {10, 330}},
    {SkinTarget::Title, -1, {280, 0, 90, 340}, {310, 10}},
    {SkinTarget::Cong, -1, {0, 340, 370, 40}, {0, 0}},
    {SkinTarget::Piece, 0, {20, 20, 120, 120}, {0, 0}},
    {SkinTarget::Piece, 1, {20, 140, 120, 60}, {0, 0}},
    {SkinTarget::Piece, 2, {20, 200, 60, 120}, {0, 0}},
    {SkinTarget::Piece, 4, {80, 200, 60, 120}, {0, 0}},
    {SkinTarget::Piece, 3, {140, 200, 60, 120}, {0, 0}},
    {SkinTarget::Piece, 5, {200, 200, 60, 120}, {0, 0}},
    {SkinTarget::Piece, 6, {200, 140, 60, 60}, {0, 0}},
    {SkinTarget::Piece, 7, {200, 140, 60, 60}, {0, 0}},
    {SkinTarget::Piece, 8, {200, 140, 60, 60}, {0, 0}},
    {SkinTarget::Piece, 9, {200, 140, 60, 60}, {0, 0}},
}};

// The second looks of the big and the small blocks, handed out only by the
// about box's hidden bonus.
inline constexpr SkinRect SecondBigBlock = {140, 20, 120, 120};
inline constexpr SkinRect SecondSmallBlock = {140, 140, 60, 60};
