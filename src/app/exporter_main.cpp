// torv-exporter: every card of a plant in Prometheus.

#include "exporter/exporter_server.h"
#include "exporter/options.h"

#include <QCoreApplication>
#include <cstdio>

int main(int argc, char** argv) {
    QStringList args;
    for (int i = 0; i < argc; ++i)
        args << QString::fromLocal8Bit(argv[i]);
    const torv::exporter::CommandLine cl = torv::exporter::parseCommandLine(args);
    if (!cl.error.isEmpty()) {
        std::fprintf(stderr, "torv-exporter: %s\n", qUtf8Printable(cl.error));
        return 2;
    }
    if (cl.help) {
        std::fputs(qUtf8Printable(torv::exporter::helpText()), stdout);
        return 0;
    }
    if (cl.version) {
        std::printf("torv-exporter %s\n", TORV_VERSION);
        return 0;
    }
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("torv-exporter"));
    QObject owner;
    torv::exporter::ExporterServer server(cl.options, torv::exporter::clientFetch(&owner));
    QString error;
    if (!server.start(error)) {
        std::fprintf(stderr, "torv-exporter: %s\n", qUtf8Printable(error));
        return 1;
    }
    const QHostAddress& a = cl.options.address;
    const QString host = a.protocol() == QAbstractSocket::IPv6Protocol
                             ? QLatin1Char('[') + a.toString() + QLatin1Char(']')
                             : a.toString();
    std::fprintf(stderr, "torv-exporter: listening on http://%s:%u/\n", qUtf8Printable(host),
                 unsigned(server.port()));
    std::fflush(stderr);
    return app.exec();
}
