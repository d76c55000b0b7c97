#include "WhenModal.h"

#include <QApplication>
#include <QTimer>
#include <QWidget>

void WhenModal(std::function<void(QWidget *)> act)
{
    QTimer::singleShot(0, qApp, [act = std::move(act)] {
        if (QWidget *modal = QApplication::activeModalWidget())
            act(modal);
    });
}
