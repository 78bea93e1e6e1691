// The replay driver for compilers without libFuzzer: runs the target once on every file of
// the folders (or the files) given, in name order. A fault aborts, which fails the test.

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStringList>
#include <cstdint>
#include <cstdio>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

int main(int argc, char** argv) {
    QStringList files;
    for (int i = 1; i < argc; ++i) {
        const QString arg = QString::fromLocal8Bit(argv[i]);
        if (QFileInfo(arg).isDir()) {
            const QDir dir(arg);
            for (const QString& name : dir.entryList(QDir::Files, QDir::Name))
                files << dir.absoluteFilePath(name);
        } else {
            files << QFileInfo(arg).absoluteFilePath(); // targets may change the folder
        }
    }
    if (files.isEmpty()) {
        std::fprintf(stderr, "no corpus files given\n");
        return 2;
    }
    for (const QString& path : files) {
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly)) {
            std::fprintf(stderr, "cannot read %s\n", qPrintable(path));
            return 2;
        }
        const QByteArray bytes = file.readAll();
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.constData()),
                               static_cast<std::size_t>(bytes.size()));
    }
    std::printf("replayed %lld inputs\n", static_cast<long long>(files.size()));
    return 0;
}
