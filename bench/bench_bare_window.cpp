// The start benchmark's window anchor: a bare Qt Widgets main window of the
// same build, drawn, then "shown" on standard output and closed, as FBT does
// with --quit-when-shown.
#include <QApplication>
#include <QMainWindow>
#include <QTextStream>
#include <QTimer>

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    QMainWindow window;
    window.resize(800, 600);
    window.show();
    QTimer::singleShot(0, &window, [&window] {
        window.repaint();
        QTextStream(stdout) << "shown" << Qt::endl;
        window.close();
    });
    return app.exec();
}
