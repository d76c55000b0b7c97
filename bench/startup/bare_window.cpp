// The yardstick for the game's start-up: a bare Qt window with the same menu
// bar and the same fixed client area, built and measured the same way, that
// does nothing else.
#include <QApplication>
#include <QMainWindow>
#include <QMenuBar>

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    QMainWindow window;
    window.setWindowTitle(QStringLiteral("Bare"));
    window.setWindowFlags(Qt::Window | Qt::WindowTitleHint | Qt::WindowSystemMenuHint
        | Qt::WindowMinimizeButtonHint | Qt::WindowCloseButtonHint
        | Qt::MSWindowsFixedSizeDialogHint);
    auto *client = new QWidget(&window);
    client->setFixedSize(408, 405);
    window.setCentralWidget(client);
    QMenu *file = window.menuBar()->addMenu(QStringLiteral("&File"));
    for (const char *item :
        {"&New Game", "&Load Game", "&Save Game", "-", "Set S&kin", "-", "E&xit"})
        item[0] == '-' ? (void)file->addSeparator()
                       : (void)file->addAction(QString::fromLatin1(item));
    QMenu *help = window.menuBar()->addMenu(QStringLiteral("&Help"));
    for (const char *item : {"H&ow to Play", "-", "&About"})
        item[0] == '-' ? (void)help->addSeparator()
                       : (void)help->addAction(QString::fromLatin1(item));
    window.setFixedSize(window.sizeHint());
    window.show();
    return app.exec();
}
