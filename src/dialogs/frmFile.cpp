#include "frmFile.h"

#include "app/FormGeometry.h"

#include <QDir>
#include <QListWidget>
#include <QPushButton>

QStringList ListMatchingFiles(const QString &folder, const QString &pattern)
{
    QDir dir(folder);
    if (folder.isEmpty() || !dir.exists())
        return {};
    dir.setNameFilters(pattern.split(QLatin1Char(';'), Qt::SkipEmptyParts));
    dir.setFilter(QDir::Files);
    dir.setSorting(QDir::Name | QDir::IgnoreCase);
    return dir.entryList();
}

frmFile::frmFile(frmMain &main)
    : FixedDialog(main, QStringLiteral("File"), 5190, 3675)
{
    filList = new QListWidget(this);
    filList->setGeometry(PxRect(8, 0, 5175, 2820));
    filList->setSelectionMode(QAbstractItemView::SingleSelection);
    cmdSet = new QPushButton(QStringLiteral("Set"), this);
    cmdSet->setGeometry(PxRect(604, 3000, 1695, 495));
    cmdCancel = new QPushButton(QStringLiteral("Cancel"), this);
    cmdCancel->setGeometry(PxRect(2891, 3000, 1695, 495));
    // Neither button is the default: a file is chosen with the confirm
    // button only, never by Return.
    for (QPushButton *button : {cmdSet, cmdCancel})
        button->setAutoDefault(false);
    setTabOrder(filList, cmdCancel);
    setTabOrder(cmdCancel, cmdSet);
    filList->setFocus();
    connect(cmdSet, &QPushButton::clicked, this, &frmFile::cmdSet_Click);
    connect(cmdCancel, &QPushButton::clicked, this, &frmFile::cmdCancel_Click);
}

void frmFile::SetFolders(const QStringList &folders)
{
    moreFolders_.clear();
    for (QString folder : folders) {
        while (folder.size() > 1 && folder.endsWith(QLatin1Char('/')))
            folder.chop(1);
        moreFolders_.append(folder);
    }
    folder_ = moreFolders_.isEmpty() ? QString() : moreFolders_.takeFirst();
    Refresh();
}

void frmFile::SetPattern(const QString &pattern)
{
    pattern_ = pattern;
    Refresh();
}

void frmFile::Refresh()
{
    filList->clear();
    QStringList names = ListMatchingFiles(folder_, pattern_);
    if (!moreFolders_.isEmpty()) {
        for (const QString &folder : std::as_const(moreFolders_))
            for (const QString &name : ListMatchingFiles(folder, pattern_))
                if (!names.contains(name))
                    names.append(name);
        names.sort(Qt::CaseInsensitive);
    }
    filList->addItems(names);
}

void frmFile::showEvent(QShowEvent *event)
{
    QDialog::showEvent(event);
    Form_Activate();
}

void frmFile::Form_Activate()
{
    if (filList->count() == 0)
        cmdSet->setEnabled(false);
}

void frmFile::cmdSet_Click()
{
    const QList<QListWidgetItem *> selected = filList->selectedItems();
    if (selected.isEmpty())
        return;
    const QString name = selected.first()->text();
    absFilename = bytFlag == ChooseSavedGame ? folder_ + QLatin1Char('/') + name : name;
    accept();
}

void frmFile::cmdCancel_Click()
{
    absFilename.clear();
    QDialog::reject();
}

void frmFile::reject()
{
    cmdCancel_Click();
}
