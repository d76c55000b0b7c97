// The level chooser: 70 rows, one per level, and two buttons. Its answer,
// once it has closed, is newLevel: the chosen row, or -1 for Cancel.
#pragma once

#include <QDialog>

#include <cstdint>

class QListWidget;
class QPushButton;
class frmMain;

class frmLevel : public QDialog
{
    Q_OBJECT
public:
    explicit frmLevel(frmMain &main);

    QListWidget *lisLevel = nullptr;
    QPushButton *cmdSetLevel = nullptr;
    QPushButton *cmdCancel = nullptr;
    int16_t newLevel = -1;

    void Form_Load();
    void cmdSetLevel_Click();
    void cmdCancel_Click();

    // The close control and Escape answer Cancel.
    void reject() override;

private:
    frmMain &main_;
};
