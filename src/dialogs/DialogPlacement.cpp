#include "DialogPlacement.h"

#include "app/FormGeometry.h"
#include "app/frmMain.h"

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

FixedDialog::FixedDialog(frmMain &main, const QString &title, int widthUnits, int heightUnits)
    : QDialog(&main,
        Qt::Dialog | Qt::WindowTitleHint | Qt::WindowSystemMenuHint | Qt::WindowCloseButtonHint
            | Qt::MSWindowsFixedSizeDialogHint)
    , main_(main)
{
    setWindowTitle(title);
    setFixedSize(PxSize(widthUnits, heightUnits));
    const ScreenMetrics s = main.Screen();
    CentreOver(*this, main, s.unitsPerPixelX, s.unitsPerPixelY);
}
