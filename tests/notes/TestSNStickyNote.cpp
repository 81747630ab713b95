#include "kit/QWKeyedArchiver.h"
#include "kit/QWKeyedUnarchiver.h"
#include "kit/QWNotificationCenter.h"
#include "notes/SNStickyNote.h"
#include "settings/SNUserDefaults.h"
#include "support/QWManualScheduler.h"
#include "support/QWTestEnvironment.h"
#include "tags/SNTag.h"
#include "tags/SNTagManager.h"
#include "themes/SNTheme.h"
#include "themes/SNThemeManager.h"
#include "themes/SNUserTheme.h"

#include <QTest>

namespace {

const QStringList archiveKeys { QStringLiteral("data"), QStringLiteral("dateCreated"),
    QStringLiteral("dateModified"), QStringLiteral("windowFrame"), QStringLiteral("isCollapsed"),
    QStringLiteral("collapsedWindowFrame"), QStringLiteral("pinState"),
    QStringLiteral("windowAlpha"), QStringLiteral("tags"), QStringLiteral("themeName"),
    QStringLiteral("countState") };

std::shared_ptr<SNStickyNote> roundTrip(const std::shared_ptr<SNStickyNote> &note)
{
    const QWKeyedUnarchiver::ParseResult result
        = QWKeyedUnarchiver::parse(QWKeyedArchiver::archivedDataWithRootObject(note));
    return QWKeyedUnarchiver::decodeObjectOfClass<std::shared_ptr<SNStickyNote>>(result.root)
        .value_or(nullptr);
}

QWArchiveValue archiveWithout(const std::shared_ptr<SNStickyNote> &note, const QString &key)
{
    const QWArchiveValue full = QWKeyedArchiver::archivedValue(note);
    QWArchiveValue::Entries entries;
    for (const QWArchiveValue::Entry &entry : full.entries()) {
        if (entry.first != key)
            entries.push_back(entry);
    }
    return QWArchiveValue::fromObject(full.className(), entries);
}

} // namespace

class TestSNStickyNote final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void newNoteDefaults();
    void archiveRoundTripOfEveryKey();
    void archiveLayoutOnDisk();
    void missingAndDamagedKeys();
    void themeResolution();
    void followsThemeRenames();
    void setTagsKeepsBackReferences();

private:
    std::unique_ptr<QWTestEnvironment> m_environment;
    std::unique_ptr<QWManualScheduler> m_scheduler;
};

void TestSNStickyNote::init()
{
    m_environment = std::make_unique<QWTestEnvironment>();
    m_scheduler = std::make_unique<QWManualScheduler>(
        QDateTime(QDate(2026, 11, 21), QTime(10, 30), Qt::UTC));
}

void TestSNStickyNote::cleanup()
{
    for (const std::shared_ptr<SNTag> &tag : SNTagManager::sharedManager().tags())
        SNTagManager::sharedManager().removeTag(tag);
    m_scheduler.reset();
    m_environment.reset();
}

void TestSNStickyNote::newNoteDefaults()
{
    const std::shared_ptr<SNStickyNote> note = SNStickyNote::note();
    QCOMPARE(note->dateCreated(), m_scheduler->currentDateTime());
    QCOMPARE(note->dateModified(), m_scheduler->currentDateTime());
    QCOMPARE(note->pinState(), 0);
    QCOMPARE(note->countState(), 0);
    QCOMPARE(note->windowAlpha(), 0.949999988079071);
    QCOMPARE(note->themeName(), QStringLiteral("SNYellowPadTheme"));
    QVERIFY(note->theme());
    QCOMPARE(note->theme()->className(), QStringLiteral("SNYellowPadTheme"));
    QVERIFY(!note->attributedString());
    QVERIFY(note->windowFrame().isNull());
    QVERIFY(note->tags().isEmpty());
    QVERIFY(!note->isCollapsed());
    QVERIFY(!note->hasContent());

    // A record without text writes no key at all.
    QVERIFY(QWKeyedArchiver::archivedValue(note).entries().empty());
}

void TestSNStickyNote::archiveRoundTripOfEveryKey()
{
    auto note = SNStickyNote::note();
    QWTextAttributes bold;
    bold.setBold(true);
    bold.setFontFamily(QStringLiteral("Helvetica Neue"));
    QWMutableAttributedString text;
    text.appendString(QStringLiteral("Groceries "), bold);
    text.appendString(QStringLiteral("#shopping"));
    note->setAttributedString(text.attributedString());
    note->setDateCreated(QDateTime(QDate(2025, 1, 2), QTime(3, 4, 5, 678), Qt::UTC));
    note->setWindowFrame(QStringLiteral("{{100, 200}, {240, 180}}"));
    note->setIsCollapsed(true);
    note->setCollapsedWindowFrame(QStringLiteral("{{100, 200}, {240, 24}}"));
    note->setPinState(2);
    note->setWindowAlpha(0.85);
    note->setCountState(1);
    note->setThemeName(QStringLiteral("SNHackerTheme"));
    const std::shared_ptr<SNTag> tag
        = SNTag::tagWithNameColor(QStringLiteral("#shopping"), QWColor(0.1, 0.2, 0.3));
    SNTagManager::sharedManager().addTag(tag);
    note->setTags({ tag });

    const std::shared_ptr<SNStickyNote> read = roundTrip(note);
    QVERIFY(read);
    QCOMPARE(read->attributedString(), note->attributedString());
    QCOMPARE(read->dateCreated(), note->dateCreated());
    QCOMPARE(read->dateModified(), note->dateModified());
    QCOMPARE(read->windowFrame(), note->windowFrame());
    QCOMPARE(read->isCollapsed(), true);
    QCOMPARE(read->collapsedWindowFrame(), note->collapsedWindowFrame());
    QCOMPARE(read->pinState(), 2);
    QCOMPARE(read->windowAlpha(), double(0.85f)); // narrowed to single precision on purpose
    QVERIFY(read->windowAlpha() != 0.85);
    QCOMPARE(read->countState(), 1);
    QCOMPARE(read->themeName(), QStringLiteral("SNHackerTheme"));
    QCOMPARE(read->theme()->className(), QStringLiteral("SNHackerTheme"));
    // The index's own tag comes back, and it knows the new note.
    QCOMPARE(read->tags(), QList<std::shared_ptr<SNTag>> { tag });
    QVERIFY(tag->containsNote(read.get()));

    // Unset frames and dates come back as empty frames and the time of writing.
    auto bare = std::make_shared<SNStickyNote>();
    bare->setAttributedString(QWAttributedString(QStringLiteral("x")));
    m_scheduler->advanceBy(60);
    const std::shared_ptr<SNStickyNote> bareRead = roundTrip(bare);
    QCOMPARE(bareRead->windowFrame(), QStringLiteral(""));
    QVERIFY(!bareRead->windowFrame().isNull());
    QCOMPARE(bareRead->collapsedWindowFrame(), QStringLiteral(""));
    QCOMPARE(bareRead->dateCreated(), m_scheduler->currentDateTime());
    QVERIFY(bareRead->tags().isEmpty());
    QCOMPARE(bareRead->themeName(), QStringLiteral("SNYellowPadTheme")); // empty name, resolved
}

void TestSNStickyNote::archiveLayoutOnDisk()
{
    auto note = SNStickyNote::note();
    note->setAttributedString(QWAttributedString(QStringLiteral("hello")));
    const QWArchiveValue value = QWKeyedArchiver::archivedValue(note);
    QStringList keys;
    for (const QWArchiveValue::Entry &entry : value.entries())
        keys.append(entry.first);
    QCOMPARE(keys, archiveKeys);
    QCOMPARE(value.valueForKey(u"data")->kind(), QWArchiveValue::Kind::Data);
    QCOMPARE(value.valueForKey(u"windowAlpha")->kind(), QWArchiveValue::Kind::Float);
    QCOMPARE(value.valueForKey(u"dateCreated")->kind(), QWArchiveValue::Kind::Date);
    QCOMPARE(value.valueForKey(u"isCollapsed")->kind(), QWArchiveValue::Kind::Bool);
    QCOMPARE(value.valueForKey(u"pinState")->kind(), QWArchiveValue::Kind::Integer);
    QCOMPARE(value.valueForKey(u"tags")->kind(), QWArchiveValue::Kind::Array);
    // The text is an archive of its own, not RTF.
    const QWKeyedUnarchiver::ParseResult text
        = QWKeyedUnarchiver::parse(value.valueForKey(u"data")->toData());
    QVERIFY(text.isComplete());
    QCOMPARE(text.root.className(), QStringLiteral("QWAttributedString"));
    QCOMPARE(text.root.valueForKey(u"string")->toString(), QStringLiteral("hello"));
}

void TestSNStickyNote::missingAndDamagedKeys()
{
    auto note = SNStickyNote::note();
    note->setAttributedString(QWAttributedString(QStringLiteral("text")));
    note->setWindowAlpha(0.5);

    auto read = QWKeyedUnarchiver::decodeObjectOfClass<std::shared_ptr<SNStickyNote>>(
        archiveWithout(note, QStringLiteral("windowAlpha")));
    QCOMPARE((*read)->windowAlpha(), 0.0);
    read = QWKeyedUnarchiver::decodeObjectOfClass<std::shared_ptr<SNStickyNote>>(
        archiveWithout(note, QStringLiteral("data")));
    QVERIFY(!(*read)->attributedString());
    read = QWKeyedUnarchiver::decodeObjectOfClass<std::shared_ptr<SNStickyNote>>(
        archiveWithout(note, QStringLiteral("windowFrame")));
    QVERIFY((*read)->windowFrame().isNull());

    // Wrong kinds and values out of range read as missing or as the nearest sane value.
    QWArchiveValue damaged = QWKeyedArchiver::archivedValue(note);
    damaged.setValueForKey(QStringLiteral("pinState"), QWArchiveValue::fromInteger(99));
    damaged.setValueForKey(QStringLiteral("windowAlpha"), QWArchiveValue::fromDouble(7.5));
    damaged.setValueForKey(QStringLiteral("data"), QWArchiveValue::fromData(QByteArray("garbage")));
    damaged.setValueForKey(
        QStringLiteral("dateCreated"), QWArchiveValue::fromString(QStringLiteral("yesterday")));
    damaged.setValueForKey(
        QStringLiteral("tags"), QWArchiveValue::fromString(QStringLiteral("#a")));
    read = QWKeyedUnarchiver::decodeObjectOfClass<std::shared_ptr<SNStickyNote>>(damaged);
    QVERIFY(read);
    QCOMPARE((*read)->pinState(), 99); // the window treats it as normal; the archive keeps it
    QCOMPARE((*read)->windowAlpha(), 1.0);
    QVERIFY(!(*read)->attributedString());
    QVERIFY(!(*read)->dateCreated());
    QVERIFY((*read)->tags().isEmpty());
}

void TestSNStickyNote::themeResolution()
{
    auto note = std::make_shared<SNStickyNote>();
    note->setThemeName(QStringLiteral("SNRedTheme")); // in no menu, still a theme
    QCOMPARE(note->theme()->name(), QStringLiteral("Red"));
    const std::shared_ptr<SNTheme> first = note->theme();
    note->updateTheme();
    QVERIFY(note->theme() != first); // every resolution makes its own object

    for (const QString &unknown : { QStringLiteral("NSObject"), QStringLiteral("SNNoSuchTheme") }) {
        note->setThemeName(unknown);
        QCOMPARE(note->theme()->className(), QStringLiteral("SNYellowPadTheme"));
        QCOMPARE(note->themeName(), unknown); // kept, and archived, as it was
    }

    SNUserDefaults::standardUserDefaults().setDefaultThemeName(QStringLiteral("SNDarkTheme"));
    note->setThemeName(QString());
    QCOMPARE(note->themeName(), QStringLiteral("SNDarkTheme"));
    QCOMPARE(note->theme()->className(), QStringLiteral("SNDarkTheme"));
    SNUserDefaults::standardUserDefaults().setDefaultThemeName(QString());
    note->setThemeName(QString());
    QCOMPARE(note->themeName(), QStringLiteral("SNYellowPadTheme"));

    // A user theme is the registry's own object; a missing one falls back to yellow.
    auto ocean = SNUserTheme::theme();
    ocean->setName(QStringLiteral("Ocean"));
    SNThemeManager::sharedManager().addTheme(ocean);
    note->setThemeName(QStringLiteral("SNUserTheme-Ocean"));
    QCOMPARE(note->theme(), std::static_pointer_cast<SNTheme>(ocean));
    note->setThemeName(QStringLiteral("SNUserTheme-Atlantis"));
    QCOMPARE(note->theme()->className(), QStringLiteral("SNYellowPadTheme"));
    QCOMPARE(note->themeName(), QStringLiteral("SNUserTheme-Atlantis"));
    SNThemeManager::sharedManager().removeTheme(ocean);
}

void TestSNStickyNote::followsThemeRenames()
{
    auto note = SNStickyNote::note();
    note->setThemeName(QStringLiteral("SNUserTheme-Work"));

    QWNotificationCenter &center = QWNotificationCenter::defaultCenter();
    center.postNotificationNameObjectUserInfo(SNStickyNote::themeNameDidChangeNotification, nullptr,
        { { QStringLiteral("newName"), QStringLiteral("SNUserTheme-Play") } });
    QCOMPARE(note->themeName(), QStringLiteral("SNUserTheme-Work"));

    center.postNotificationNameObjectUserInfo(SNStickyNote::themeNameDidChangeNotification, nullptr,
        { { QStringLiteral("oldName"), QStringLiteral("SNUserTheme-Work") },
            { QStringLiteral("newName"), QStringLiteral("SNUserTheme-Play") } });
    QCOMPARE(note->themeName(), QStringLiteral("SNUserTheme-Play"));
}

void TestSNStickyNote::setTagsKeepsBackReferences()
{
    auto note = std::make_shared<SNStickyNote>();
    const auto work = SNTag::tagWithNameColor(QStringLiteral("#work"), QWColor::black());
    const auto home = SNTag::tagWithNameColor(QStringLiteral("#home"), QWColor::white());
    SNTagManager::sharedManager().addTags({ work, home });
    note->setTags({ work, home });
    QVERIFY(work->containsNote(note.get()) && home->containsNote(note.get()));
    note->setTags({ home });
    QVERIFY(!work->containsNote(note.get()));
    QVERIFY(
        !SNTagManager::sharedManager().tagWithName(QStringLiteral("#work"))); // its last note left
    note->setTags({});
    QVERIFY(note->tags().isEmpty());
    QVERIFY(!home->containsNote(note.get()));
    QCOMPARE(SNTagManager::sharedManager().count(), 0);
}

QTEST_MAIN(TestSNStickyNote)
#include "TestSNStickyNote.moc"
