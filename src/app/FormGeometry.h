// Window and control measures are given in coordinate units at 15 units per
// pixel; Qt lays widgets out in pixels.
#pragma once

#include "game/Moves.h"

#include <QFont>
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

// The font of the main window's and the dialogs' own texts, at this size.
inline QFont SansFont(qreal points)
{
    QFont font(QStringLiteral("Sans Serif"));
    font.setStyleHint(QFont::SansSerif);
    font.setPointSizeF(points);
    font.setWeight(QFont::Normal);
    return font;
}
