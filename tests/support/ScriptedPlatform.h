// A desktop for tests: replays queued answers and records every call. A box
// nobody scripted gets Cancel (or an empty text) and makes Done() false. No
// document ever opens: nothing reaches a real browser or mail program. The
// screen is 1280 x 1024 pixels.
#pragma once

#include "platform/Platform.h"

#include <QList>
#include <QStringList>
#include <functional>

class ScriptedPlatform : public Platform
{
public:
    struct Call
    {
        QString title;
        QString text;
        Icon icon;
    };

    void Reply(Answer answer) { answers_.append(answer); }
    void Type(const QString &text) { inputs_.append(text); }
    // Runs while the box is "shown", e.g. to look at the window behind it.
    void OnMessage(std::function<void(const Call &)> spy) { spy_ = std::move(spy); }

    // Every message box as "title | text", in order.
    QStringList Shown() const;
    // Every input box as "title | prompt | default text".
    QStringList Asked() const { return asked_; }
    QStringList Opened() const { return opened_; }
    // All scripted answers were used and no call went unscripted.
    bool Done() const { return !unscripted_ && answers_.isEmpty() && inputs_.isEmpty(); }

    Answer MsgBox(QWidget *owner, const QString &text, Buttons buttons, Icon icon,
        const QString &title) override;
    QString InputBox(QWidget *owner, const QString &prompt, const QString &title,
        const QString &defaultText) override;
    bool OpenDocument(const QString &target) override
    {
        opened_.append(target);
        return false;
    }
    ScreenMetrics Screen() const override { return {1, 1, 1280, 1024}; }

private:
    QList<Answer> answers_;
    QStringList inputs_;
    QList<Call> calls_;
    QStringList asked_;
    QStringList opened_;
    std::function<void(const Call &)> spy_;
    bool unscripted_ = false;
};
