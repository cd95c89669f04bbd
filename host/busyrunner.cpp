#include "host/busyrunner.h"

#include <QEventLoop>
#include <QPointer>
#include <QProgressDialog>
#include <QThread>

namespace corvane::host {

void runBusy(const QString& title, const std::function<void(const std::function<void(const QString&)>&)>& work, QWidget* parent)
{
    QProgressDialog dialog(title, QString(), 0, 0, parent);
    dialog.setWindowTitle(QStringLiteral("FBT"));
    dialog.setWindowModality(Qt::ApplicationModal);
    dialog.setMinimumDuration(0);
    dialog.setMinimumWidth(460);
    dialog.setCancelButton(nullptr);
    dialog.show();

    QPointer<QProgressDialog> label(&dialog);
    QEventLoop loop;
    QThread* thread = QThread::create([&] {
        work([label](const QString& text) {
            QMetaObject::invokeMethod(
                label.data(), [label, text] {
                    if (label)
                        label->setLabelText(text);
                },
                Qt::QueuedConnection);
        });
    });
    QObject::connect(thread, &QThread::finished, &loop, &QEventLoop::quit);
    thread->start();
    loop.exec(QEventLoop::ExcludeUserInputEvents);
    thread->wait();
    delete thread;
}

} // namespace corvane::host
