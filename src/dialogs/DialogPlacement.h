// Dialogs centre themselves over the main window when they load.
#pragma once

class QWidget;

// Moves `dialog` so that its outer box is centred over `owner`'s, with the
// window measures in coordinate units and the differences rounded before the
// halving. A dialog not yet shown has no frame; it is taken to get the same
// frame as its owner.
void CentreOver(QWidget &dialog, const QWidget &owner, float unitsPerPixelX, float unitsPerPixelY);
