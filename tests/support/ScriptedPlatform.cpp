#include "ScriptedPlatform.h"

QStringList ScriptedPlatform::Shown() const
{
    QStringList shown;
    for (const Call &call : calls_)
        shown.append(call.title + QStringLiteral(" | ") + call.text);
    return shown;
}

Answer ScriptedPlatform::MsgBox(
    QWidget *, const QString &text, Buttons buttons, Icon icon, const QString &title)
{
    calls_.append({title, text, icon});
    if (spy_)
        spy_(calls_.last());
    unscripted_ = unscripted_ || answers_.isEmpty();
    if (answers_.isEmpty())
        return buttons == Buttons::Ok ? Answer::Ok : Answer::Cancel;
    return answers_.takeFirst();
}

QString ScriptedPlatform::InputBox(
    QWidget *, const QString &prompt, const QString &title, const QString &defaultText)
{
    asked_.append(title + QStringLiteral(" | ") + prompt + QStringLiteral(" | ") + defaultText);
    unscripted_ = unscripted_ || inputs_.isEmpty();
    return inputs_.isEmpty() ? QString() : inputs_.takeFirst();
}
