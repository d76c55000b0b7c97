// The desktop as Qt sees it: logical pixels, so one unit per pixel.
#pragma once

#include "Platform.h"

class QtPlatform : public Platform
{
public:
    Answer MsgBox(QWidget *owner, const QString &text, Buttons buttons, Icon icon,
        const QString &title) override;
    QString InputBox(QWidget *owner, const QString &prompt, const QString &title,
        const QString &defaultText) override;
    bool OpenDocument(const QString &target) override;
    ScreenMetrics Screen() const override;
};
