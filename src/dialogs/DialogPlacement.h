// What every dialog shares: its border, its size and its place.
#pragma once

#include <QDialog>

class frmMain;

// Moves `dialog` so that its outer box is centred over `owner`'s, with the
// window measures in coordinate units and the differences rounded before the
// halving. A dialog not yet shown has no frame; it is taken to get the same
// frame as its owner.
void CentreOver(QWidget &dialog, const QWidget &owner, float unitsPerPixelX, float unitsPerPixelY);

// A dialog of the main window: a fixed border with a title and a close
// control only, its size given in coordinate units, centred over the main
// window as it loads.
class FixedDialog : public QDialog
{
public:
    FixedDialog(frmMain &main, const QString &title, int widthUnits, int heightUnits);

protected:
    frmMain &main_;
};
