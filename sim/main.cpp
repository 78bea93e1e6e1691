// torv-sim: the TORV-NET card simulator as a program of its own.

#include "sim/options.h"
#include "sim/server.h"
#include "sim/sim_state.h"

#include <QCoreApplication>
#include <QHostAddress>
#include <cstdio>
#include <memory>

int main(int argc, char* argv[]) {
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("torv-sim"));
    QCoreApplication::setApplicationVersion(QStringLiteral(TORV_VERSION));

    const torv::sim::CommandLine cl = torv::sim::parseCommandLine(QCoreApplication::arguments());
    if (cl.help) {
        std::fputs(cl.helpText.toLocal8Bit().constData(), stdout);
        return 0;
    }
    if (cl.version) {
        std::printf("torv-sim %s\n", TORV_VERSION);
        return 0;
    }
    if (!cl.error.isEmpty()) {
        std::fprintf(stderr, "torv-sim: %s\nTry 'torv-sim --help'.\n",
                     cl.error.toLocal8Bit().constData());
        return 2;
    }

    const torv::sim::SimOptions& options = cl.options;
    auto state = std::make_shared<torv::sim::SimState>(options);
    torv::sim::Server server(state, options);
    if (!server.listen(QHostAddress(options.host), options.port)) {
        std::fprintf(stderr, "torv-sim: cannot listen on %s:%u: %s\n",
                     options.host.toLocal8Bit().constData(), static_cast<unsigned>(options.port),
                     server.errorString().toLocal8Bit().constData());
        return 1;
    }
    std::fprintf(stderr, "torv-sim: card simulator listening on %s:%u\n",
                 options.host.toLocal8Bit().constData(), static_cast<unsigned>(server.port()));
    std::fflush(stderr);
    return app.exec();
}
