#include "stats/replacedFile.h"

#include "tests/stats/situation.h"

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

class replacedFileTest : public QObject
{
    Q_OBJECT

    QByteArray path(const char *name) const;
    QStringList files() const;

    std::unique_ptr<QTemporaryDir> m_directory;

private slots:
    void init();
    void cleanup() { m_directory.reset(); }

    void newFile();
    void oldFile();
    void throughLink();
    void failedWrite();
    void notAFile();
    void longName();
    void forbiddingDirectory();
    void unwritableFile();
};

namespace
{

struct stat statusOf(const QByteArray &path)
{
    struct stat status = {};
    stat(path.constData(), &status);
    return status;
}

bool replace(const QByteArray &path, const QByteArray &content)
{
    replacedFile file(path.constData());
    if (!file.isOpen())
        return false;
    file.replace([&](int descriptor) {
        return write(descriptor, content.constData(), static_cast<std::size_t>(content.size())) ==
               content.size();
    });
    return true;
}

/// Root may do everything; while this lives, root is nobody.
class ordinaryUser
{
public:
    ordinaryUser()
    {
        if (geteuid() == 0 && seteuid(65534) != 0)
            qFatal("cannot become an ordinary user");
    }
    ~ordinaryUser()
    {
        if (geteuid() != getuid() && seteuid(getuid()) != 0)
            qFatal("cannot become root again");
    }
    ordinaryUser(const ordinaryUser &) = delete;
    ordinaryUser &operator=(const ordinaryUser &) = delete;
};

} // namespace

void replacedFileTest::init()
{
    m_directory = std::make_unique<QTemporaryDir>();
    QVERIFY(m_directory->isValid());
    chmod(path("").constData(), 0777);
}

QByteArray replacedFileTest::path(const char *name) const
{
    return QFile::encodeName(m_directory->path()) + '/' + name;
}

QStringList replacedFileTest::files() const
{
    return QDir(m_directory->path())
        .entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System);
}

void replacedFileTest::newFile()
{
    // One that is not used leaves nothing behind.
    QVERIFY(replacedFile(path("file").constData()).isOpen());
    QCOMPARE(files(), QStringList());

    const mode_t before = umask(027);
    QVERIFY(replace(path("file"), "new"));
    umask(before);
    QCOMPARE(fileContent(path("file")), "new");
    QCOMPARE(statusOf(path("file")).st_mode & 07777u, 0640u);
    QCOMPARE(files(), QStringList{"file"});
}

void replacedFileTest::oldFile()
{
    writeFile(path("file"), "much longer than the new one");
    chmod(path("file").constData(), 0664);
    const ino_t inode = statusOf(path("file")).st_ino;
    QVERIFY(replace(path("file"), "new"));
    QCOMPARE(fileContent(path("file")), "new");
    QCOMPARE(statusOf(path("file")).st_mode & 07777u, 0664u);
    QVERIFY(statusOf(path("file")).st_ino != inode);
    QCOMPARE(files(), QStringList{"file"});
}

void replacedFileTest::throughLink()
{
    QVERIFY(QDir(m_directory->path()).mkdir("elsewhere"));
    writeFile(path("elsewhere/file"), "old");
    QVERIFY(QFile::link("elsewhere/file", m_directory->filePath("link")));
    QVERIFY(replace(path("link"), "new"));
    QCOMPARE(fileContent(path("elsewhere/file")), "new");
    QVERIFY(QFileInfo(m_directory->filePath("link")).isSymLink());
}

void replacedFileTest::failedWrite()
{
    writeFile(path("file"), "old");
    replacedFile file(path("file").constData());
    int calls = 0;
    file.replace([&](int descriptor) {
        ++calls;
        return write(descriptor, "half", 4) != 4;
    });
    QCOMPARE(calls, 1);
    QCOMPARE(fileContent(path("file")), "old");
    QCOMPARE(files(), QStringList{"file"});
}

void replacedFileTest::notAFile()
{
    QVERIFY(QDir(m_directory->path()).mkdir("directory"));
    QCOMPARE(mkfifo(path("pipe").constData(), 0666), 0);
    QCOMPARE(mkfifo(path("readPipe").constData(), 0666), 0);
    const fileDescriptor reader(open(path("readPipe").constData(), O_RDONLY | O_NONBLOCK));
    const QStringList before = files();
    for (const char *name : {"directory", "pipe", "readPipe", "nowhere/file"})
        QVERIFY2(!replacedFile(path(name).constData()).isOpen(), name);
    QVERIFY(!replacedFile("").isOpen());
    QCOMPARE(files(), before);
}

void replacedFileTest::longName()
{
    const QByteArray longest(255, 'x');
    for (const char *content : {"one", "two"}) {
        QVERIFY(replace(path(longest.constData()), content));
        QCOMPARE(fileContent(path(longest.constData())), content);
    }
    QVERIFY(!replace(path(longest.constData()) + 'x', "three"));
}

void replacedFileTest::forbiddingDirectory()
{
    // Nothing can be made in it, or nothing of others can be renamed in it.
    for (const mode_t directoryMode : {0555u, 01777u}) {
        const bool isSticky = directoryMode & 01000;
        if (isSticky && geteuid() != 0)
            QSKIP("the file has to be another user's");
        writeFile(path("file"), "much longer than the new one");
        chmod(path("file").constData(), 0666);
        const ino_t inode = statusOf(path("file")).st_ino;
        chmod(path("").constData(), directoryMode);
        {
            const ordinaryUser user;
            QVERIFY(replace(path("file"), "new"));
            QVERIFY(isSticky || !replace(path("other"), "new"));
        }
        chmod(path("").constData(), 0777);
        QCOMPARE(fileContent(path("file")), "new");
        QCOMPARE(statusOf(path("file")).st_ino, inode);
        QCOMPARE(files(), QStringList{"file"});
    }
}

void replacedFileTest::unwritableFile()
{
    writeFile(path("file"), "old");
    chmod(path("file").constData(), 0444);
    {
        const ordinaryUser user;
        QVERIFY(!replace(path("file"), "new"));
    }
    QCOMPARE(fileContent(path("file")), "old");
    QCOMPARE(files(), QStringList{"file"});
}

QTEST_APPLESS_MAIN(replacedFileTest)
#include "replacedFileTest.moc"
