// The about box: the game's picture, its version and copyright, and two
// links. A hidden bonus sits behind three modified presses.
#pragma once

#include "DialogPlacement.h"

#include <QLabel>

#include <cstdint>

class QPushButton;
class frmAbout;

// The program's fixed addresses, under a domain reserved for examples.
inline const QString ContactAddress = QStringLiteral("quorvel@example.org");
inline const QString WebAddress = QStringLiteral("https://quorvel.example.org/");
inline const QString CopyrightNotice = QStringLiteral("Copyright \u00A9 2026 Quorvel team");
enum { VersionMajor = 1, VersionMinor = 0, VersionRevision = 1 };

// "Quorvel Version " + major + "." + minor and revision written together.
QString VersionLine();

// A label of the about box that hands its mouse events to the box.
class AboutLabel : public QLabel
{
    Q_OBJECT
public:
    enum class Role { Picture, Email, Updates };
    AboutLabel(frmAbout &box, Role role, QWidget *parent);

protected:
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;

private:
    frmAbout &box_;
    Role role_;
    bool pressedLeft_ = false;
};

class frmAbout : public FixedDialog
{
    Q_OBJECT
public:
    explicit frmAbout(frmMain &main);

    AboutLabel *imgVess = nullptr;
    QLabel *lblProd = nullptr;
    QPushButton *cmdOk = nullptr;
    AboutLabel *lblEmail = nullptr;
    AboutLabel *lblUpdates = nullptr;

    // 0 nothing yet, 2 the first step done, 3 the second.
    uint8_t eggStep = 0;

    void Form_Load();
    void cmdOk_Click();
    void lblEmail_Click();
    void lblEmail_MouseDown(int16_t Button, int16_t Shift, float X, float Y);
    void lblEmail_MouseMove(int16_t Button, int16_t Shift, float X, float Y);
    void lblUpdates_Click();
    void lblUpdates_MouseDown(int16_t Button, int16_t Shift, float X, float Y);
    void lblUpdates_MouseMove(int16_t Button, int16_t Shift, float X, float Y);
    void imgVess_MouseDown(int16_t Button, int16_t Shift, float X, float Y);

    // The link's text colour, as the box last set it.
    static QColor LinkColour(const QLabel &label);

private:
    void SetLinkColour(QLabel &label, const QColor &colour);
};

// The game's pointing hand, 32 x 32, its hot spot on the fingertip at (5, 0).
QCursor HandCursor();
