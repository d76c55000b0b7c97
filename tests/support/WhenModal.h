// Acts on the next modal dialog as a user would, once its event loop runs:
// arm it before calling exec() or the command that opens the dialog.
#pragma once

#include <functional>

class QWidget;

// `act` runs once with the active modal widget, if there is one by then.
void WhenModal(std::function<void(QWidget *)> act);
