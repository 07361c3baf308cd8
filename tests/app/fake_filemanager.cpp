#include <QCoreApplication>
#include <QDBusConnection>
#include <QFile>

// Stands in for the desktop's file manager on a private session bus and
// writes each ShowItems call's URIs to the file named on its command line.
class FileManager : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.FileManager1")
public:
    explicit FileManager(QString record) : record(std::move(record)) {}

public Q_SLOTS:
    void ShowItems(const QStringList &uris, const QString &startupId)
    {
        QFile file(record);
        if (file.open(QIODevice::Append))
            file.write((uris.join(' ') + " startup=" + startupId + "\n").toUtf8());
    }

private:
    QString record;
};

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    if (argc < 2)
        return 2;
    FileManager manager(QString::fromLocal8Bit(argv[1]));
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.registerObject(QStringLiteral("/org/freedesktop/FileManager1"), &manager,
                            QDBusConnection::ExportAllSlots) ||
        !bus.registerService(QStringLiteral("org.freedesktop.FileManager1")))
        return 1;
    return app.exec();
}

#include "fake_filemanager.moc"
