// Every text that a person meets can be translated: the template is translated into a language without a
// single plain letter, everything is opened in it, and no plain word may be left.

#include "collectthread.h"
#include "collectview.h"
#include "eventlist.h"
#include "eventtype.h"
#include "generatedjournal.h"
#include "mainwindow.h"
#include "pluginlibrary.h"
#include "portbox.h"
#include "template.h"
#include "translation.h"
#include "trends.h"
#include "unitsdialog.h"
#include "unitsession.h"
#include "visibletexts.h"

#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QPushButton>
#include <QTabWidget>
#include <QTableView>
#include <QTableWidget>
#include <QTemporaryDir>

namespace {

using DataMap = QMap<int, QVariant>;

// Qt's own texts, which have a catalogue of their own.
bool isOfQt(const QByteArray& context)
{
    return context.startsWith('Q');
}

/// Notes what is asked for, and speaks for Qt.
class Recorder : public AskedTexts
{
public:
    QString translate(const char* context, const char* sourceText, const char* disambiguation,
                      int n) const override
    {
        AskedTexts::translate(context, sourceText, disambiguation, n);
        return isOfQt(context) ? texttemplate::pseudo(QString::fromUtf8(sourceText)) : QString();
    }
};

// The unit symbols in figures are the same in every language.
const QString unitSymbols = QStringLiteral("Ah Hz Min kVA kW");

// The words of two letters or more; single ones are phases and unit symbols. Not in tags, nor in paths.
QString plainWords(const QStringList& texts)
{
    static const QRegularExpression form(QStringLiteral("<[^>]*>|/[^ :]+|([A-Za-z]{2,})"));
    QStringList words;
    for (const QString& text : texts) {
        for (auto match = form.globalMatch(text); match.hasNext();) {
            const QString word = match.next().captured(1);
            if (!word.isEmpty() && !unitSymbols.split(QLatin1Char(' ')).contains(word))
                words += QStringLiteral("%1 in \"%2\"").arg(word, text);
        }
    }
    words.removeDuplicates();
    return words.join(QLatin1Char('\n'));
}

// Every point that the pages show, each with a state that has a text.
DataMap everyPoint()
{
    DataMap points;
    for (int id = 2000; id < 4300; ++id)
        points.insert(id, 1);
    return points;
}

} // namespace

#define NO_PLAIN_WORDS(window) QCOMPARE(plainWords(visibleTexts(window)), QString())

class TextsTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void refusesNames_data();
    void refusesNames();
    void refusesFiles_data();
    void refusesFiles();
    void textsOfEvents();
    void window();
    void settingDialog();
    void questions();
    void journalViews();
    void unitsDialog();
    void nothingIsMissing();
    void cleanupTestCase();

private:
    QString path(const char* name) const { return m_folder.filePath(QLatin1String(name)); }
    CollectView* view() const { return m_session->collector().getView(); }

    QTemporaryDir m_folder;
    std::set<AskedText> m_template;
    Translation m_translation;
    Recorder m_recorder;
    std::unique_ptr<PluginLibrary> m_plugin;
    std::unique_ptr<UnitSession> m_session;
    std::unique_ptr<MainWindow> m_window;
};

void TextsTest::initTestCase()
{
    QVERIFY(QDir::setCurrent(m_folder.path()));
    QCOMPARE(texttemplate::run(QStringLiteral(TEXTS_SCRIPT), {path("all.ts"), QStringLiteral(TABLE_TEXTS)}),
             QString());
    m_template = texttemplate::translate(path("all.ts"), path("ups-host_xx.ts"));
    QVERIFY(!m_template.empty());
    qputenv("QT_SELECT", "5"); // where a system has the tools of several versions
    QCOMPARE(texttemplate::run(QStringLiteral("lrelease"), {path("ups-host_xx.ts")}), QString());
    QCOMPARE(m_translation.install(QStringLiteral("xx"), m_folder.path()), QString());
    QCoreApplication::installTranslator(&m_recorder);

    m_plugin = std::make_unique<PluginLibrary>(QStringLiteral(PLUGIN_FILE));
    QVERIFY2(m_plugin->factory(), qPrintable(m_plugin->error()));
    m_session = std::make_unique<UnitSession>(
        QStringLiteral("1"), std::unique_ptr<CollectThread>(m_plugin->factory()->create(nullptr)),
        UnitSession::Cycles::OwnThread);
    m_window = std::make_unique<MainWindow>(QVector<UnitSession*>{m_session.get()}, 0);
    m_window->setEventList(new QWidget);
    m_window->setTrends(new QWidget);
}

void TextsTest::cleanupTestCase()
{
    m_window.reset();
    m_session.reset();
    QCoreApplication::removeTranslator(&m_recorder);
}

void TextsTest::refusesNames_data()
{
    QTest::addColumn<bool>("isGood");
    for (const char* name : {"de", "pt_BR", "sr@latin", "zh-Hans"})
        QTest::newRow(name) << true;
    for (const char* name : {"", "../de", "de.qm", "d e", "de\n"})
        QTest::newRow(name) << false;
}

void TextsTest::refusesNames()
{
    QTEST(Translation::nameError(QString::fromLatin1(QTest::currentDataTag())).isEmpty(), "isGood");
}

void TextsTest::refusesFiles_data()
{
    QTest::addColumn<QByteArray>("content");
    QFile file(path("ups-host_xx.qm"));
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray good = file.readAll();
    QTest::newRow("missing") << QByteArray();
    QTest::newRow("not_a_translation") << QByteArray("ups-host");
    QTest::newRow("cut") << good.left(good.size() / 2);
    QTest::newRow("without_texts") << good.left(16);
}

void TextsTest::refusesFiles()
{
    QFETCH(QByteArray, content);
    // Of another region than one that is there, which must not be taken instead.
    const QString language = QStringLiteral("xx_") + QString::fromLatin1(QTest::currentDataTag());
    QFile file(m_folder.filePath(Translation::fileName(language)));
    QVERIFY(content.isEmpty() || (file.open(QIODevice::WriteOnly) && file.write(content) == content.size()));
    file.close();
    Translation translation;
    const QString error = translation.install(language, m_folder.path());
    QVERIFY2(error.contains(file.fileName()) && error.contains(QLatin1String("lrelease")), qPrintable(error));
}

void TextsTest::textsOfEvents()
{
    CollectThread& collector = m_session->collector();
    QCOMPARE(collector.getEventLogDesc().size(), 996);
    QCOMPARE(plainWords(collector.getEventLogDesc()), QString());
    QCOMPARE(plainWords(collector.getDataLogDesc() + collector.changeLogData(everyPoint())), QString());
}

void TextsTest::window()
{
    m_window->show();
    QTRY_VERIFY(m_window->isAncestorOf(view()));
    NO_PLAIN_WORDS(*m_window); // not heard yet
    const auto report = [&](int type) {
        emit m_session->collector().postDEvent(
            type, {{QStringLiteral("timeStr"), QStringLiteral("2024-03-05 07:08")},
                   {QStringLiteral("data"), QVariant::fromValue(everyPoint())}});
    };
    report(EventType::Communicating);
    report(EventType::CommunicationLost);
    QTRY_COMPARE(m_session->state().contact(), UnitState::Contact::Lost);
    NO_PLAIN_WORDS(*m_window);
    report(EventType::Communicating);
    report(EventType::Data);
    QTRY_VERIFY(!m_session->state().liveData().isEmpty());
    m_window->findChild<QComboBox*>(QStringLiteral("LevelChooser"))->setCurrentIndex(2);
    auto* tabs = view()->findChild<QTabWidget*>(QStringLiteral("devStacketTable"));
    QWidget* diagram = tabs->widget(0);
    for (int block = 0; block < 6; ++block) {
        QTest::keyClick(diagram, Qt::Key_Right);
        QTest::keyClick(diagram, Qt::Key_Space); // opens what the block has to tell
        NO_PLAIN_WORDS(*diagram);
    }
    for (int tab = 0; tab < tabs->count(); ++tab) {
        tabs->setCurrentIndex(tab);
        NO_PLAIN_WORDS(*m_window);
    }
}

void TextsTest::settingDialog()
{
    const auto tables = view()->findChildren<QTableWidget*>();
    int count = 0;
    for (QTableWidget* table : tables) {
        for (int row = 0; row < table->rowCount(); ++row) {
            emit table->cellDoubleClicked(row, 0);
            const auto windows = QApplication::topLevelWidgets();
            for (QWidget* dialog : windows) {
                if (!dialog->isVisible() || !qobject_cast<QDialog*>(dialog))
                    continue;
                ++count;
                NO_PLAIN_WORDS(*dialog);
                dialog->hide();
            }
        }
    }
    QVERIFY2(count > 50, qPrintable(QString::number(count)));
}

void TextsTest::questions()
{
    const auto* status = m_window->findChild<QLabel*>(QStringLiteral("StatusLine"));
    const auto buttons = view()->findChildren<QPushButton*>();
    int count = 0;
    for (QPushButton* button : buttons) {
        // The last one would go on to Qt's file dialog.
        if (button->objectName() == QLatin1String("download_history_log"))
            continue;
        QTimer::singleShot(0, m_window.get(), [&] {
            auto* box = qobject_cast<QDialog*>(QApplication::activeModalWidget());
            QVERIFY(box);
            ++count;
            const QString words = plainWords(visibleTexts(*box));
            box->accept(); // in any case, or the test would stand here
            QCOMPARE(words, QString());
        });
        const QString before = status->text();
        button->click();
        QTRY_VERIFY(status->text() != before); // tells what became of the command
        QCOMPARE(plainWords({status->text()}), QString());
    }
    QCOMPARE(count, 12);
}

void TextsTest::journalViews()
{
    const QStringList eventTexts = m_session->collector().getEventLogDesc();
    const qint64 nowMs = QDateTime::currentMSecsSinceEpoch();
    const QString phases = QStringLiteral("230.0/230.0/230.0");
    std::vector<JournalRecord> records{generatedjournal::row(nowMs, QStringLiteral("1"), phases, phases,
                                                             phases, QStringLiteral("270.0-270.0"), phases)};
    for (int code = 0; code < eventTexts.size(); ++code)
        records.push_back(generatedjournal::event(nowMs, QStringLiteral("1"), EventType::Alarm, code,
                                                  code < eventTexts.size() / 2 ? 1 : 0, eventTexts[code]));
    for (const int type : {1029, 1040, 1041, 1042, 2009, 2010})
        records.push_back(generatedjournal::event(nowMs, QStringLiteral("1"), type));
    for (int command = 1001; command <= 1045; ++command)
        records.push_back(generatedjournal::event(nowMs, QStringLiteral("1"), command, command));
    EventList events(path("journal.sqlite"));
    Trends trends(path("journal.sqlite"));
    trends.setUnit(QStringLiteral("1"));
    for (QWidget* widget : {static_cast<QWidget*>(&events), static_cast<QWidget*>(&trends)}) {
        widget->resize(900, 700);
        widget->show();
        QVERIFY(QTest::qWaitForWindowExposed(widget));
        NO_PLAIN_WORDS(*widget); // no journal yet, or none that says anything
    }
    generatedjournal::write(path("journal.sqlite"), records);
    QTRY_VERIFY(events.findChild<QTableView*>()->model()->rowCount() > 0);
    NO_PLAIN_WORDS(events);
    NO_PLAIN_WORDS(trends);
}

void TextsTest::unitsDialog()
{
    QFile file(path("dev.ini"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("[1]\nportName=/dev/none\naddr=1\n[2]\ncommType=1\nipAddr=127.0.0.1\nport=x\n");
    file.close();
    UnitsDialog dialog(path("dev.ini"), path("serial.ini"));
    dialog.show();
    dialog.findChild<PortBox*>()->clear(); // what hangs on this computer's ports is told in its own words
    NO_PLAIN_WORDS(dialog);
    dialog.selectUnit(QStringLiteral("2"));
    NO_PLAIN_WORDS(dialog);
}

// Among them what is only painted, or shown where this test does not look.
void TextsTest::nothingIsMissing()
{
    const std::set<AskedText> asked = m_recorder.texts();
    QVERIFY(asked.size() > 1000);
    QStringList missing;
    for (const AskedText& text : asked) {
        if (!isOfQt(text.context) && m_template.count(text) == 0)
            missing += QString::fromUtf8(text.context + ": " + text.source);
    }
    QCOMPARE(missing, QStringList());
}

QTEST_MAIN(TextsTest)
#include "tst_texts.moc"
