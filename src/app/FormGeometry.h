// Window and control measures are given in coordinate units at 15 units per
// pixel; Qt lays widgets out in pixels.
#pragma once

#include "game/Moves.h"

#include <QRect>
#include <QSize>

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
