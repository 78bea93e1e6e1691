#include "ui/qt_platform.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QVBoxLayout>

int main(int argc, char* argv[]) {
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("torv-panel"));
    QApplication::setApplicationDisplayName(QStringLiteral("TORV-NET Client"));
    QApplication::setApplicationVersion(QStringLiteral(TORV_VERSION));

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Monitor and control panel for the TORV-NET load-cell card."));
    parser.addHelpOption();
    parser.addVersionOption();
    QCommandLineOption simulate(QStringLiteral("simulate"),
                                QStringLiteral("Run on the built-in card simulator."));
    parser.addOption(simulate);
    parser.process(app);

    torv::QtPlatform platform;
    QMainWindow window;
    window.setObjectName(QStringLiteral("frmClient"));
    auto* central = new QWidget;
    auto* layout = new QVBoxLayout(central);
    auto* ip = new QLineEdit;
    ip->setObjectName(QStringLiteral("TxtIP"));
    layout->addWidget(new QLabel(QStringLiteral("Card address:")));
    layout->addWidget(ip);
    if (parser.isSet(simulate))
        layout->addWidget(new QLabel(QStringLiteral("The card simulator is not available yet.")));
    window.setCentralWidget(central);
    platform.setDialogParent(&window);
    window.show();
    return app.exec();
}
