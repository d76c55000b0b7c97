#include "DialogPlacement.h"

#include "game/Moves.h"

#include <QWidget>

void CentreOver(QWidget &dialog, const QWidget &owner, float unitsPerPixelX, float unitsPerPixelY)
{
    const QRect ownerOuter = owner.frameGeometry();
    QSize outer = dialog.frameGeometry().size();
    if (!dialog.isVisible())
        outer = dialog.size() + (ownerOuter.size() - owner.size());
    const int left = CentredOrigin(ownerOuter.x() * unitsPerPixelX,
        ownerOuter.width() * unitsPerPixelX, outer.width() * unitsPerPixelX);
    const int top = CentredOrigin(ownerOuter.y() * unitsPerPixelY,
        ownerOuter.height() * unitsPerPixelY, outer.height() * unitsPerPixelY);
    dialog.move(RoundHalfEven(left / unitsPerPixelX), RoundHalfEven(top / unitsPerPixelY));
}
