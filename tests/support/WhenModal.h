// Acts on the next modal dialog as a user would, once it is really up:
// arm it before calling exec() or the command that opens the dialog.
#pragma once

#include <functional>

class QWidget;

// `act` runs once with the active modal widget. Gives up after `timeoutMs`.
void WhenModal(std::function<void(QWidget *)> act, int timeoutMs = 5000);
