// What the game asks of the desktop: message and input boxes, handing a
// document or link to its opener, and the screen's measures. The program
// uses the Qt implementation; tests script the answers.
#pragma once

#include <QString>

class QWidget;

enum class Icon { Critical, Question, Exclamation, Information };
enum class Buttons { Ok, YesNo, YesNoCancel };
enum class Answer { Ok, Yes, No, Cancel };

struct ScreenMetrics
{
    float unitsPerPixelX = 1; // coordinate units that make one pixel
    float unitsPerPixelY = 1;
    float width = 0; // the screen, in coordinate units
    float height = 0;
};

class Platform
{
public:
    virtual ~Platform() = default;
    // Modal over `owner`; the lines of `text` are joined by CR LF.
    virtual Answer MsgBox(
        QWidget *owner, const QString &text, Buttons buttons, Icon icon, const QString &title)
        = 0;
    // One line of text; empty on Cancel.
    virtual QString InputBox(
        QWidget *owner, const QString &prompt, const QString &title, const QString &defaultText)
        = 0;
    // A local file, a mailto: or a web link. True when it could be handed on.
    virtual bool OpenDocument(const QString &target) = 0;
    virtual ScreenMetrics Screen() const = 0;
};
