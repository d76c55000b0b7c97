// The file chooser: the files of one folder that match a pattern, for
// loading a game (answers the full path) or choosing a skin (answers the bare
// name). Its answer, once it has closed, is absFilename; empty means Cancel.
#pragma once

#include "DialogPlacement.h"

#include <cstdint>

class QListWidget;
class QPushButton;

class frmFile : public FixedDialog
{
    Q_OBJECT
public:
    explicit frmFile(frmMain &main);

    enum : uint8_t { ChooseSavedGame = 1, ChooseSkin = 2 };
    uint8_t bytFlag = 0;
    QString absFilename;
    QListWidget *filList = nullptr;
    QPushButton *cmdSet = nullptr;
    QPushButton *cmdCancel = nullptr;

    // The ";"-separated wildcard masks; setting them lists the files anew.
    void SetPattern(const QString &pattern);
    const QString &Folder() const { return folder_; }
    // Lists the files of several folders as one, the first folder's where
    // two share a name; Folder() is then the first.
    void SetFolders(const QStringList &folders);

    void Form_Activate();
    void cmdSet_Click();
    void cmdCancel_Click();

    void reject() override;

protected:
    void showEvent(QShowEvent *event) override;

private:
    void Refresh();

    QString folder_;
    QStringList moreFolders_;
    QString pattern_ = QStringLiteral("*.*");
};

// The names of the regular files in `folder` that match any mask of
// `pattern`, without regard to case, sorted the same way. A folder that does
// not exist lists nothing.
QStringList ListMatchingFiles(const QString &folder, const QString &pattern);
