// What the units dialog writes, as the plugin and the port manager read it: through QSettings, from files
// that people have written by hand, on disks that are full.

#include "inidocument.h"
#include "pairedfiles.h"
#include "serialports.h"
#include "unitfiles.h"
#include "unitlist.h"
#include "unitrules.h"

#include <QSettings>
#include <QTemporaryDir>
#include <QtTest>

#include <csignal>
#include <random>

#include <sys/resource.h>

namespace {

using Values = QMap<QString, QVariant>;

Values valuesOf(const QString& file)
{
    const QSettings settings(file, QSettings::IniFormat);
    Values values;
    const QStringList keys = settings.allKeys();
    for (const QString& key : keys)
        values.insert(key, settings.value(key));
    return values;
}

QByteArray textOf(const QString& name)
{
    QFile file(name);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(not there)");
}

UnitEntry lineUnit(const QString& name, const QString& port, int address = 1)
{
    UnitEntry unit;
    unit.name = name;
    unit.portName = port;
    unit.address = QString::number(address);
    return unit;
}

UnitEntry tcpUnit(const QString& name, const QString& host)
{
    UnitEntry unit;
    unit.name = name;
    unit.commType = QStringLiteral("1");
    unit.host = host;
    return unit;
}

/// Writes fail beyond this size as they do on a full disk.
class FullDisk
{
public:
    explicit FullDisk(rlim_t bytes)
    {
        std::signal(SIGXFSZ, SIG_IGN);
        ::getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit small{bytes, m_before.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &small);
    }
    ~FullDisk() { ::setrlimit(RLIMIT_FSIZE, &m_before); }
    Q_DISABLE_COPY(FullDisk)

private:
    rlimit m_before;
};

const char* const handWritten =
    "; the units\r\n\r\n[Server room] ; rack 3\r\nportName = /dev/ttyUSB0 ; left\r\n"
    "addr=2\r\nvendor.key=\"a;b\\x41 c\"\r\n; of B\r\n\r\n  [B%20]\r\ncommType=1\r\n"
    "ipAddr=ups.example\r\neventChooseList\\3=1\r\nlist=a, \"b\", c\r\n; the end";

} // namespace

class UnitFilesTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void writesWhatQSettingsReads();
    void keepsWhatItDoesNotKnow();
    void editsLikeNothingElse_data();
    void editsLikeNothingElse();
    void savesAndReadsBack();
    void refusesToEdit_data();
    void refusesToEdit();
    void changesNothingWhenItCannotSave_data();
    void changesNothingWhenItCannotSave();
    void endsWhatACrashLeft_data();
    void endsWhatACrashLeft();
    void takesBackTheFirstFile();
    void followsTheHostsRules_data();
    void followsTheHostsRules();
    void warns();
    void listsPorts();

private:
    QString path(const char* name) const { return m_folder->filePath(QLatin1String(name)); }
    void write(const char* name, const QByteArray& text) const;
    UnitFiles files() const { return {path("dev.ini"), path("serial.ini")}; }

    std::unique_ptr<QTemporaryDir> m_folder;
};

void UnitFilesTest::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
}

void UnitFilesTest::write(const char* name, const QByteArray& text) const
{
    QFile file(path(name));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(text);
}

// Names and values out of everything that an INI file gives a meaning to.
void UnitFilesTest::writesWhatQSettingsReads()
{
    const QString pieces = QString::fromUtf8("%;\"\\[]=,@#'/ \t\n\r\x01"
                                             "ab09fxUGeneral\u00e9\u20ac\U0001F50B");
    std::mt19937 random(5);
    const auto word = [&](int longest) {
        QString text;
        for (auto length = random() % unsigned(longest); length > 0; --length)
            text += pieces.at(int(random() % unsigned(pieces.size())));
        return text;
    };
    for (const char* beginning : {"", "\xef\xbb\xbf; with a mark\r\n[x]\r\ny=1", "[x]\ny=1\n\n\n"}) {
        IniDocument document(beginning);
        Values expected;
        for (int i = 0; i < 400; ++i) {
            const QString section = unitentry::lineSection(QString(QStringLiteral("s") + word(12)));
            const QString value = word(20);
            document.setValue(section, QStringLiteral("key"), QStringLiteral("before"));
            document.setValue(section, QStringLiteral("key"), value);
            expected.insert(QString(section + QLatin1String("/key")), value);
        }
        for (const char* name : {"General", "general", "%General"}) {
            document.setValue(QLatin1String(name), QStringLiteral("key"), QLatin1String(name));
            expected.insert(QLatin1String(name) + QLatin1String("/key"), QLatin1String(name));
        }
        if (*beginning)
            expected.insert(QStringLiteral("x/y"), QStringLiteral("1"));
        QCOMPARE(document.firstBadLine(), 0);
        const QByteArray name = QByteArray::number(int(strlen(beginning)));
        write(name, document.text());
        QCOMPARE(valuesOf(path(name)), expected);
    }
}

void UnitFilesTest::keepsWhatItDoesNotKnow()
{
    write("dev.ini", handWritten);
    UnitFiles edited = files();
    QCOMPARE(edited.load(), QString());
    UnitConfig config = edited.stored();
    QCOMPARE(config.units.size(), 2);
    QCOMPARE(config.units[1].name, QStringLiteral("B "));
    QCOMPARE(config.units[0].portName, QStringLiteral("/dev/ttyUSB0"));
    QCOMPARE(edited.save(config), QString());
    QCOMPARE(textOf(path("dev.ini")), QByteArray(handWritten));
    QVERIFY(!QFile::exists(path("serial.ini")));

    config.units[0].portName = QStringLiteral("p;q");
    config.units[1].name = QStringLiteral("C=\u20ac");
    config.units[1].tcpPort = QStringLiteral("5020");
    QCOMPARE(edited.save(config), QString());
    QByteArray expected = handWritten;
    expected.replace("= /dev/ttyUSB0 ;", "= \"p;q\" ;");
    expected.replace("[B%20]", "[C=%U20AC]");
    expected.replace("\"b\", c\r\n", "\"b\", c\r\nport=5020\r\n");
    QCOMPARE(textOf(path("dev.ini")), expected);
    QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files), QStringList(QStringLiteral("dev.ini")));
}

void UnitFilesTest::editsLikeNothingElse_data()
{
    QTest::addColumn<QByteArray>("before");
    QTest::addColumn<QByteArray>("after"); // B/addr set to 7, then A removed, then B called C
    const auto row = [](const char* name, const char* before, const char* after) {
        QTest::newRow(name) << QByteArray(before) << QByteArray(after);
    };
    row("plain", "[A]\nx=1\n\n[B]\naddr=1\n", "[C]\naddr=7\n");
    row("last one counts", "[B]\naddr=1\naddr=2\n[A]\nx=1", "[C]\naddr=1\naddr=7\n");
    row("section in two parts", "[A]\nx=1\n[B]\ny=1\n[A]\nz=1\n[B]\nw=1\n; c\n",
        "[C]\ny=1\n[C]\nw=1\naddr=7\n; c\n");
    row("comment of the next", "; a\n[A]\n; in\nx=1 ; end\n; b\n[B]\n", "; a\n; b\n[C]\naddr=7\n");
    row("no end of line", "[A]\nx=1\n[B]", "[C]\naddr=7\n");
    row("value over two lines", "[B]\nx=\"1\n[A]\n\"\naddr = 3\t; c\n[A]\ny=1\\\n2\n[D]\n",
        "[C]\nx=\"1\n[A]\n\"\naddr = 7\t; c\n[D]\n");
    row("not there", "[AB]\nx=1\n", "[AB]\nx=1\n\n[C]\naddr=7\n");
    row("other case", "[b]\naddr=1\n[B]\nADDR=1\n", "[b]\naddr=1\n[C]\nADDR=1\naddr=7\n");
    row("section escaped", "[%42]\n%61ddr=1\n", "[C]\n%61ddr=7\n");
    row("key of a longer name", "B\\addr=1\n", "B\\addr=7\n");
}

void UnitFilesTest::editsLikeNothingElse()
{
    QFETCH(QByteArray, before);
    IniDocument document(before);
    document.setValue(QStringLiteral("B"), QStringLiteral("addr"), QStringLiteral("7"));
    document.removeSection(QStringLiteral("A"));
    document.renameSection(QStringLiteral("B"), QStringLiteral("C"));
    QTEST(document.text(), "after");
}

void UnitFilesTest::savesAndReadsBack()
{
    write("dev.ini", "[A]\nportName=/dev/a\nprotocol=3\n[B]\nportName=b\n[B/eventChooseList]\n2=1\n");
    write("serial.ini", "[dev/a]\nparam=12#3#0#0\n");
    UnitFiles edited = files();
    QCOMPARE(edited.load(), QString());
    UnitConfig config = edited.stored();
    QCOMPARE(config.units.size(), 2);
    std::swap(config.units[0].name, config.units[1].name);
    config.lines[QStringLiteral("dev/a")].timeoutMs = QStringLiteral("300");
    config.units += lineUnit(QStringLiteral("x/\u00e9 1"), QStringLiteral("/dev//b %1"), 9);
    config.lines[QStringLiteral("dev/b %1")].param = QStringLiteral("19200,e,8,2");
    config.units += tcpUnit(QStringLiteral("[T]"), QStringLiteral("\u00fcps.example"));
    QCOMPARE(edited.save(config), QString());

    const Values devices = valuesOf(path("dev.ini"));
    QCOMPARE(devices.value(QStringLiteral("B/protocol")).toInt(), 3);
    QCOMPARE(devices.value(QStringLiteral("A/eventChooseList/2")).toInt(), 1);
    QCOMPARE(devices.value(QStringLiteral("[T]/ipAddr")).toString(), QStringLiteral("\u00fcps.example"));
    QCOMPARE(unitlist::read(path("dev.ini")).error, QString());
    const QSettings lines(path("serial.ini"), QSettings::IniFormat);
    QCOMPARE(lines.value(QStringLiteral("/dev//b %1/param")).toString(), QStringLiteral("19200,e,8,2"));
    QVERIFY(textOf(path("serial.ini")).startsWith("[dev/a]\nparam=12#3#0#0\ntimeout=300\n"));
    UnitFiles again = files();
    QCOMPARE(again.load(), QString());
    QCOMPARE(again.stored().units.size(), 4);
    QCOMPARE(again.stored().units[2].portName, QStringLiteral("/dev//b %1"));
    // What the first one found is not there any more.
    QVERIFY(edited.save(config).contains(QLatin1String("another program")));
}

void UnitFilesTest::refusesToEdit_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("error");
    const auto row = [](const char* name, const QByteArray& text, const char* error) {
        QTest::newRow(name) << text << QString::fromLatin1(error);
    };
    row("no key", "[A]\n\nportName\n", "line 3");
    row("foreign comment", "[A]\n# hello\n", "line 2");
    row("open section", "[A\nx=1\n", "line 1");
    row("open quote", "[A]\nportName=\"x\n[B]\nportName=y\n", "line 2");
    row("nothing behind a backslash", "[A]\nportName=x\\", "line 2");
    row("no line behind a backslash", "[A]\nportName=x\\\r\n", "line 2");
    row("binary", QByteArray("\0\1\2\xff\xfe", 5), "line 1");
}

void UnitFilesTest::refusesToEdit()
{
    QFETCH(QByteArray, text);
    QFETCH(QString, error);
    write("dev.ini", text);
    UnitFiles edited = files();
    const QString found = edited.load();
    QVERIFY2(found.contains(error) && found.contains(path("dev.ini")), qPrintable(found));
    QCOMPARE(textOf(path("dev.ini")), text);
}

void UnitFilesTest::changesNothingWhenItCannotSave_data()
{
    QTest::addColumn<QByteArray>("devText");
    QTest::addColumn<QByteArray>("serialText");
    QTest::addColumn<int>("diskBytes");
    QTest::addColumn<QString>("error");
    const QByteArray dev = "[A]\nportName=p\n";
    const QByteArray big = "; " + QByteArray(2000, 'x') + '\n';
    const auto row = [](const char* name, const QByteArray& devText, const QByteArray& serialText,
                        int diskBytes, const char* error) {
        QTest::newRow(name) << devText << serialText << diskBytes << QString::fromLatin1(error);
    };
    row("disk full at the first", big + dev, "", 1000, "dev.ini cannot be written: File too large");
    row("disk full at the second", dev, big, 1000, "serial.ini cannot be written: File too large");
    row("host refuses it", "[A]\nportName=p\nprotocol=x\n", "", 0, "Z/protocol=x");
    row("key outside", "portName=p\n[A]\nportName=p\n", "", 0, "[General]");
    row("serial.ini with an open quote", dev, "[x]\ny=\"1\n", 0, "serial.ini is written in a way");
    row("unit inside another's section", "[s]\nportName=a\nA\\portName=p\nA\\addr=2\n", "", 0,
        "dev.ini is written in a way");
}

void UnitFilesTest::changesNothingWhenItCannotSave()
{
    QFETCH(QByteArray, devText);
    QFETCH(QByteArray, serialText);
    QFETCH(int, diskBytes);
    QFETCH(QString, error);
    write("dev.ini", devText);
    write("serial.ini", serialText);
    UnitFiles edited = files();
    QCOMPARE(edited.load(), QString());
    UnitConfig config = edited.stored();
    config.units.last().name = QStringLiteral("Z");
    config.lines[QStringLiteral("p")].timeoutMs = QStringLiteral("500");
    QString found;
    {
        const FullDisk disk(diskBytes > 0 ? rlim_t(diskBytes) : RLIM_INFINITY);
        found = edited.save(config);
    }
    QVERIFY2(found.contains(error) && found.contains(m_folder->path()), qPrintable(found));
    QVERIFY(!found.contains(QLatin1String(".new")) && !found.contains(QLatin1Char('\n')));
    QCOMPARE(textOf(path("dev.ini")), devText);
    QCOMPARE(textOf(path("serial.ini")), serialText);
    QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files).size(), 2);
}

// The names that lie there after each step of a save.
void UnitFilesTest::endsWhatACrashLeft_data()
{
    QTest::addColumn<QStringList>("there");
    QTest::addColumn<bool>("isNew");
    const auto row = [](const char* there, bool isNew) {
        QTest::newRow(there) << QString::fromLatin1(there).split(QLatin1Char(' ')) << isNew;
    };
    row("dev.ini serial.ini dev.ini.new", false);
    row("dev.ini serial.ini serial.ini.new", false); // of a save that changed this file only
    row("dev.ini serial.ini dev.ini.new serial.ini.new", false);
    row("dev.ini serial.ini dev.ini.new serial.ini.ready", false);
    row("dev.ini serial.ini serial.ini.ready", true);
    row("dev.ini serial.ini.ready", true);
}

void UnitFilesTest::endsWhatACrashLeft()
{
    QFETCH(QStringList, there);
    QFETCH(bool, isNew);
    for (const QString& name : qAsConst(there))
        write(name.toLatin1(),
              name.count(QLatin1Char('.')) > 1 ? "[p]\ntimeout=900\n" : "[p]\ntimeout=800\n");
    UnitFiles::recover(path("dev.ini"), path("serial.ini"));
    QCOMPARE(textOf(path("serial.ini")).contains("900"), isNew);
    QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files),
             QStringList({QStringLiteral("dev.ini"), QStringLiteral("serial.ini")}));
}

void UnitFilesTest::takesBackTheFirstFile()
{
    write("dev.ini", "old");
    QVERIFY(QDir().mkpath(path("serial.ini/x"))); // nothing can take its place
    {
        PairedFiles pair({path("dev.ini"), "old", "new"}, {path("serial.ini"), "", "new"});
        QVERIFY(pair.prepare());
        QVERIFY(!pair.commit());
        QVERIFY(pair.error().contains(path("serial.ini")));
    }
    QCOMPARE(textOf(path("dev.ini")), QByteArray("old"));
    QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files), QStringList(QStringLiteral("dev.ini")));

    // A symbolic link stays one, and so do the file's permissions.
    QVERIFY(QFile::link(QStringLiteral("dev.ini"), path("link.ini")));
    QVERIFY(QFile::setPermissions(path("dev.ini"), QFile::ReadOwner | QFile::WriteOwner));
    PairedFiles linked({path("link.ini"), "old", "new"}, {path("deep/down/serial.ini"), "", "more"});
    QVERIFY(linked.prepare() && linked.commit());
    QVERIFY(QFileInfo(path("link.ini")).isSymLink());
    QCOMPARE(textOf(path("dev.ini")), QByteArray("new"));
    QCOMPARE(textOf(path("deep/down/serial.ini")), QByteArray("more"));
    QVERIFY(!(QFile::permissions(path("dev.ini")) & QFile::ReadOther));
}

void UnitFilesTest::followsTheHostsRules_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QStringList>("values");
    const auto row = [](const char* key, const char* values) {
        QTest::newRow(key) << QString::fromLatin1(key) << QString::fromLatin1(values).split(QLatin1Char('|'));
    };
    row("addr", "0|1|247|248|255|256|-1|one|1.5|");
    row("port", "0|1|65535|65536|x|");
    row("retries", "-1|0|1000|1001|");
    row("interval", "-1|0|86400|86401|");
    row("commType", "-1|0|1|2|x|");
    row("portName", "p||a b");
    row("ipAddr", "h||a b");
    row("param", "9600,n,8,1|9600,x,8,1|9600|12#3#0#0|9600,n,9,1|");
    row("timeout", "99|100|25500|25501|x|");
}

// Both look at the same file: what one accepts the other does.
void UnitFilesTest::followsTheHostsRules()
{
    QFETCH(QString, key);
    QFETCH(QStringList, values);
    const bool isLineKey = key == QLatin1String("param") || key == QLatin1String("timeout");
    for (const QString& value : qAsConst(values)) {
        for (const char* transport : {"0", "1"}) {
            m_folder = std::make_unique<QTemporaryDir>();
            IniDocument devices;
            const auto set = [&](const char* name, const QString& text) {
                devices.setValue(QStringLiteral("A"), QLatin1String(name), text);
            };
            set("commType", QLatin1String(transport));
            set("portName", QStringLiteral("p"));
            set("ipAddr", QStringLiteral("h"));
            if (!isLineKey)
                set(key.toLatin1(), value);
            IniDocument lines;
            if (isLineKey)
                lines.setValue(QStringLiteral("p"), key, value);
            write("dev.ini", devices.text());
            write("serial.ini", lines.text());
            const UnitList units = unitlist::read(path("dev.ini"));
            const QString hostError =
                units.error + unitlist::lineError(path("serial.ini"), path("dev.ini"), units.names);
            UnitFiles loaded = files();
            QCOMPARE(loaded.load(), QString());
            const UnitRules::Errors errors = UnitRules::errors(loaded.stored(), 0);
            QVERIFY2(errors.isEmpty() == hostError.isEmpty(), qPrintable(value + hostError));
            QVERIFY(errors.size() <= 1);
        }
    }
}

void UnitFilesTest::warns()
{
    UnitConfig config;
    config.units = {lineUnit(QStringLiteral("A"), QStringLiteral("/dev/a"), 1),
                    lineUnit(QStringLiteral("B"), QStringLiteral("/dev/a"), 2),
                    lineUnit(QStringLiteral("C"), QStringLiteral("/dev/by-id/a"), 1),
                    tcpUnit(QStringLiteral("D"), QStringLiteral("h")),
                    tcpUnit(QStringLiteral("E"), QStringLiteral("h"))};
    config.lines[QStringLiteral("dev/by-id/a")].param = QStringLiteral("19200,n,8,1");
    const auto warnings = [&](int index) {
        return UnitRules::warnings(config, index, [](const QString& port) { return port.right(1); })
            .join(QLatin1Char('\n'));
    };
    QCOMPARE(UnitRules::unitsOnPort(config, 0), QStringList(QStringLiteral("B")));
    QVERIFY(warnings(0).contains(QLatin1String("C has the same address")));
    QVERIFY(warnings(0).contains(QLatin1String("/dev/by-id/a with other line settings")));
    QCOMPARE(warnings(1).count(QLatin1Char('\n')), 0);
    config.lines.clear();
    QVERIFY(warnings(1).contains(QLatin1String("queries collide")));
    QVERIFY(warnings(3).startsWith(QLatin1String("E has the same address")));
    config.units[4].address = QStringLiteral("2");
    QCOMPARE(warnings(3), QString());

    for (const char* name :
         {"", "A", "general", "/x", "x/", "a//b", "a/eventChooseList", "eventChooseList"}) {
        config.units[1].name = QLatin1String(name);
        QVERIFY2(UnitRules::errors(config, 1).contains(UnitField::Name), name);
    }
}

void UnitFilesTest::listsPorts()
{
    const auto device = [this](const QString& name, const QByteArray& type) {
        const QString folder = path("sys/class/tty/") + name;
        QVERIFY(QDir().mkpath(folder + QStringLiteral("/device")));
        write(QString(QStringLiteral("sys/class/tty/") + name + QStringLiteral("/type")).toLatin1(), type);
    };
    device(QStringLiteral("ttyS0"), "4\n");
    device(QStringLiteral("ttyS10"), "4\n");
    device(QStringLiteral("ttyS2"), "0\n"); // the kernel has a name for it, the board no port
    device(QStringLiteral("ttyUSB0"), "");
    write("sys/class/tty/ttyUSB0/device/product", "Some Adapter\n");
    QVERIFY(QDir().mkpath(path("sys/class/tty/tty1"))); // a console
    QVERIFY(QDir().mkpath(path("dev/serial/by-id")));
    write("dev/ttyUSB0", "");
    QVERIFY(QFile::link(QStringLiteral("../../ttyUSB0"), path("dev/serial/by-id/usb-Some")));
    QStringList found;
    const auto ports = serialports::list(m_folder->path());
    for (const SerialPortName& port : ports)
        found += port.path + QLatin1Char('|') + port.description;
    QCOMPARE(found, QStringList({QStringLiteral("/dev/serial/by-id/usb-Some|ttyUSB0, Some Adapter"),
                                 QStringLiteral("/dev/ttyS0|"), QStringLiteral("/dev/ttyS10|")}));
}

QTEST_GUILESS_MAIN(UnitFilesTest)
#include "tst_unitfiles.moc"
