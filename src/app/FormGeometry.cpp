#include "FormGeometry.h"

#include <cmath>

int32_t RoundHalfEven(double value)
{
    return static_cast<int32_t>(std::nearbyint(value)); // default rounding mode: ties to even
}

int32_t PointerPixel(float imageEdge, float offset, float unitsPerPixel)
{
    const float sum = imageEdge + offset;
    return RoundHalfEven(sum) / RoundHalfEven(unitsPerPixel);
}

int16_t CellOfPixel(int32_t pixel)
{
    return static_cast<int16_t>((pixel - BoardOriginPx) / CellPx);
}

Cell MouseCell(
    float imageLeft, float imageTop, float X, float Y, float unitsPerPixelX, float unitsPerPixelY)
{
    return {CellOfPixel(PointerPixel(imageLeft, X, unitsPerPixelX)),
        CellOfPixel(PointerPixel(imageTop, Y, unitsPerPixelY))};
}

Cell GrabOffset(float X, float Y, float unitsPerPixelX, float unitsPerPixelY)
{
    return {static_cast<int16_t>(RoundHalfEven(X) / RoundHalfEven(unitsPerPixelX) / CellPx),
        static_cast<int16_t>(RoundHalfEven(Y) / RoundHalfEven(unitsPerPixelY) / CellPx)};
}

float DragEdge(int16_t cell, float unitsPerPixel)
{
    const int16_t pixel = static_cast<int16_t>(cell * CellPx + BoardOriginPx);
    return static_cast<float>(pixel) * unitsPerPixel;
}

float LayoutEdge(int16_t cell, float unitsPerPixel)
{
    const int16_t product = static_cast<int16_t>(cell * CellPx);
    return static_cast<float>(product) * unitsPerPixel
        + static_cast<float>(BoardOriginPx) * unitsPerPixel;
}

float UnitsOf(int16_t pixel, float unitsPerPixel)
{
    return static_cast<float>(pixel) * unitsPerPixel;
}

int32_t CentredOrigin(double outerOrigin, double outerSize, double ownSize)
{
    return static_cast<int32_t>(outerOrigin) + RoundHalfEven(outerSize - ownSize) / 2;
}
