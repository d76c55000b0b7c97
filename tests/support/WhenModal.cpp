#include "WhenModal.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QTimer>
#include <QWidget>

#include <memory>

void WhenModal(std::function<void(QWidget *)> act, int timeoutMs)
{
    auto timer = std::make_shared<QElapsedTimer>();
    timer->start();
    auto poll = std::make_shared<std::function<void()>>();
    *poll = [act = std::move(act), timer, poll, timeoutMs]() {
        QWidget *modal = QApplication::activeModalWidget();
        if (modal && modal->isVisible()) {
            act(modal);
            *poll = nullptr; // break the self-reference
            return;
        }
        if (timer->elapsed() > timeoutMs) {
            *poll = nullptr;
            return;
        }
        QTimer::singleShot(10, *poll);
    };
    QTimer::singleShot(0, *poll);
}
