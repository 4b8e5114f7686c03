// Runs a fuzz target over files instead of generated inputs: every seed and
// every saved finding under the given folders (or single files) is read and
// passed to the target once. Built with the test suites, so the inputs that
// once broke a parser are replayed on every test run, and under the
// sanitizers by `./run sanitize`.
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>

#include <cstdint>
#include <cstdio>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size);

namespace {
int replayFile(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        std::fprintf(stderr, "cannot read %s\n", qPrintable(path));
        return 1;
    }
    const QByteArray bytes = file.readAll();
    LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t *>(bytes.constData()),
                           size_t(bytes.size()));
    return 0;
}
} // namespace

int main(int argc, char **argv)
{
    int replayed = 0;
    int failures = 0;
    for (int i = 1; i < argc; ++i) {
        const QString path = QString::fromLocal8Bit(argv[i]);
        if (QFileInfo(path).isDir()) {
            QDirIterator files(path, QDir::Files, QDirIterator::Subdirectories);
            while (files.hasNext()) {
                failures += replayFile(files.next());
                ++replayed;
            }
        } else {
            failures += replayFile(path);
            ++replayed;
        }
    }
    std::printf("replayed %d inputs\n", replayed);
    // No input at all means the folder was missing: that is a failure too.
    return failures == 0 && replayed > 0 ? 0 : 1;
}
