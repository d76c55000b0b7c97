// Window and control measures are given in coordinate units at 15 units per
// pixel; Qt lays widgets out in pixels. Every conversion keeps the units per
// pixel as parameters, so a screen of 15 or 12 units per pixel lands the
// blocks on the same pixels as one of 1.
#pragma once

#include "game/Move.h"

#include <QFont>
#include <QRect>
#include <QSize>

// Board geometry in window pixels.
enum { BoardOriginPx = 30, CellPx = 60 };

// Nearest whole number, a half going to the even neighbour.
int32_t RoundHalfEven(double value);

// The pointer's window pixel on one axis: R(imageEdge + offset) div R(unitsPerPixel),
// the sum formed in single precision. Positions are in coordinate units.
int32_t PointerPixel(float imageEdge, float offset, float unitsPerPixel);

// The cell under a window pixel: (pixel - 30) div 60, truncating toward zero,
// so the 30-pixel margin counts as part of the first cell. Values off the
// board are returned as they are.
int16_t CellOfPixel(int32_t pixel);

// The cell under the pointer, from the held image's edges and the pointer's
// offset inside it, all in coordinate units.
Cell MouseCell(
    float imageLeft, float imageTop, float X, float Y, float unitsPerPixelX, float unitsPerPixelY);

// Which cell of the block the pointer grabbed, counted from its top-left cell.
Cell GrabOffset(float X, float Y, float unitsPerPixelX, float unitsPerPixelY);

// Image edge, in coordinate units, of a block resting with its top-left cell
// in this column or row, as a drag places it: (cell * 60 + 30) * unitsPerPixel.
float DragEdge(int16_t cell, float unitsPerPixel);
// The same edge as a layout places it: cell * 60 * unitsPerPixel + 30 * unitsPerPixel.
float LayoutEdge(int16_t cell, float unitsPerPixel);
// A fixed pixel position turned into coordinate units.
float UnitsOf(int16_t pixel, float unitsPerPixel);

// Origin that centres a box over another: origin + R(outerSize - ownSize) div 2.
int32_t CentredOrigin(double outerOrigin, double outerSize, double ownSize);

inline constexpr double DesignUnitsPerPixel = 15.0;

inline int Px(int units)
{
    return RoundHalfEven(units / DesignUnitsPerPixel);
}

inline QRect PxRect(int left, int top, int width, int height)
{
    return {Px(left), Px(top), Px(width), Px(height)};
}

inline QSize PxSize(int width, int height)
{
    return {Px(width), Px(height)};
}

// The font of the main window's and the dialogs' own texts, at this size.
inline QFont SansFont(qreal points)
{
    QFont font(QStringLiteral("Sans Serif"));
    font.setStyleHint(QFont::SansSerif);
    font.setPointSizeF(points);
    font.setWeight(QFont::Normal);
    return font;
}
