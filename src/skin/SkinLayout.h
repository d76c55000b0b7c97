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

// The images that receive a cut, in the order a skin is applied.
enum class SkinTarget {
    UpFrame,
    LeftFrame,
    RightFrame,
    Exit,
    Title,
    Cong,
    Piece0,
    Piece1,
    Piece2,
    Piece4,
    Piece3,
    Piece5,
    Piece6,
    Piece7,
    Piece8,
    Piece9,
};

struct SkinArea
{
    SkinTarget target;
    int16_t piece; // the block number for block images, else -1
    SkinRect rect;
};

// The four vertical bars go, from left to right in the picture, to blocks
// 2, 4, 3 and 5; the four small blocks share one picture.
inline constexpr std::array<SkinArea, 16> SkinAreas = {{
    {SkinTarget::UpFrame, -1, {0, 0, 280, 20}},
    {SkinTarget::LeftFrame, -1, {0, 20, 20, 300}},
    {SkinTarget::RightFrame, -1, {260, 20, 20, 300}},
    {SkinTarget::Exit, -1, {0, 320, 280, 20}},
    {SkinTarget::Title, -1, {280, 0, 90, 340}},
    {SkinTarget::Cong, -1, {0, 340, 370, 40}},
    {SkinTarget::Piece0, 0, {20, 20, 120, 120}},
    {SkinTarget::Piece1, 1, {20, 140, 120, 60}},
    {SkinTarget::Piece2, 2, {20, 200, 60, 120}},
    {SkinTarget::Piece4, 4, {80, 200, 60, 120}},
    {SkinTarget::Piece3, 3, {140, 200, 60, 120}},
    {SkinTarget::Piece5, 5, {200, 200, 60, 120}},
    {SkinTarget::Piece6, 6, {200, 140, 60, 60}},
    {SkinTarget::Piece7, 7, {200, 140, 60, 60}},
    {SkinTarget::Piece8, 8, {200, 140, 60, 60}},
    {SkinTarget::Piece9, 9, {200, 140, 60, 60}},
}};

// The second looks of the big and the small blocks, handed out only by the
// about box's hidden bonus.
inline constexpr SkinRect SecondBigBlock = {140, 20, 120, 120};
inline constexpr SkinRect SecondSmallBlock = {140, 140, 60, 60};
