#include "ScriptedPlatform.h"

ScriptedPlatform::ScriptedPlatform()
{
    metrics.width = 1280;
    metrics.height = 1024;
}

QStringList ScriptedPlatform::Shown() const
{
    QStringList shown;
    for (const Call &call : calls_)
        shown.append(call.title + QStringLiteral(" | ") + call.text);
    return shown;
}

bool ScriptedPlatform::Done() const
{
    return !unscripted_ && answers_.isEmpty() && inputs_.isEmpty();
}

Answer ScriptedPlatform::MsgBox(
    QWidget *, const QString &text, Buttons buttons, Icon icon, const QString &title)
{
    calls_.append({title, text, icon, buttons});
    if (spy_)
        spy_(calls_.last());
    if (answers_.isEmpty()) {
        unscripted_ = true;
        return buttons == Buttons::Ok ? Answer::Ok : Answer::Cancel;
    }
    return answers_.takeFirst();
}

QString ScriptedPlatform::InputBox(
    QWidget *, const QString &prompt, const QString &title, const QString &defaultText)
{
    asked_.append(title + QStringLiteral(" | ") + prompt + QStringLiteral(" | ") + defaultText);
    if (inputs_.isEmpty()) {
        unscripted_ = true;
        return {};
    }
    return inputs_.takeFirst();
}

bool ScriptedPlatform::OpenDocument(const QString &target)
{
    opened_.append(target);
    return false;
}
