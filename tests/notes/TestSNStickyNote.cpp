#include "kit/QWKeyedArchiver.h"
#include "kit/QWKeyedUnarchiver.h"
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

using namespace Qt::Literals::StringLiterals;

namespace {

using Note = std::shared_ptr<SNStickyNote>;

Note decoded(const QWArchiveValue &value)
{
    return QWKeyedUnarchiver::decodeObjectOfClass<Note>(value).value_or(nullptr);
}

Note roundTrip(const Note &note)
{
    return decoded(
        QWKeyedUnarchiver::parse(QWKeyedArchiver::archivedDataWithRootObject(note)).root);
}

} // namespace

class TestSNStickyNote final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_environment = std::make_unique<QWTestEnvironment>();
        m_scheduler = std::make_unique<QWManualScheduler>(
            QDateTime(QDate(2026, 11, 21), QTime(10, 30), Qt::UTC));
    }

    void cleanup()
    {
        for (const std::shared_ptr<SNTag> &tag : SNTagManager::sharedManager().tags())
            SNTagManager::sharedManager().removeTag(tag);
        m_scheduler.reset();
        m_environment.reset();
    }

    void newNoteIsDatedNowAndWritesNothingUntilItHasText()
    {
        const Note note = SNStickyNote::note();
        QCOMPARE(note->dateCreated(), m_scheduler->currentDateTime());
        QCOMPARE(note->dateModified(), m_scheduler->currentDateTime());
        QCOMPARE(note->theme()->className(), u"SNYellowPadTheme"_s);
        QVERIFY(!note->hasContent());
        QVERIFY(QWKeyedArchiver::archivedValue(note).entries().empty());
    }

    void archiveRoundTripOfEveryKey()
    {
        const Note note = SNStickyNote::note();
        QWTextAttributes bold;
        bold.setBold(true);
        note->setAttributedString(QWAttributedString(u"Groceries #shopping"_s, { { 0, 9, bold } }));
        note->setDateCreated(QDateTime(QDate(2025, 1, 2), QTime(3, 4, 5, 678), Qt::UTC));
        note->setWindowFrame(u"{{100, 200}, {240, 180}}"_s);
        note->setIsCollapsed(true);
        note->setCollapsedWindowFrame(u"{{100, 200}, {240, 24}}"_s);
        note->setPinState(2);
        note->setWindowAlpha(0.85);
        note->setCountState(1);
        note->setThemeName(u"SNHackerTheme"_s);
        const std::shared_ptr<SNTag> tag
            = SNTag::tagWithNameColor(u"#shopping"_s, QWColor(0.1, 0.2, 0.3));
        SNTagManager::sharedManager().addTag(tag);
        note->setTags({ tag });

        const Note read = roundTrip(note);
        QCOMPARE(read->attributedString(), note->attributedString());
        QCOMPARE(read->dateCreated(), note->dateCreated());
        QCOMPARE(read->dateModified(), note->dateModified());
        QCOMPARE(read->windowFrame(), note->windowFrame());
        QCOMPARE(read->isCollapsed(), true);
        QCOMPARE(read->collapsedWindowFrame(), note->collapsedWindowFrame());
        QCOMPARE(read->pinState(), 2);
        QCOMPARE(read->windowAlpha(), double(0.85f)); // narrowed to single precision on purpose
        QCOMPARE(read->countState(), 1);
        QCOMPARE(read->theme()->className(), u"SNHackerTheme"_s);
        // The index's own tag comes back, and it knows the new note.
        QCOMPARE(read->tags(), QList<std::shared_ptr<SNTag>> { tag });
        QVERIFY(tag->containsNote(read.get()));

        // Unset frames and dates come back as empty frames and the time of writing.
        auto bare = std::make_shared<SNStickyNote>();
        bare->setAttributedString(QWAttributedString(u"x"_s));
        m_scheduler->advanceBy(60);
        const Note bareRead = roundTrip(bare);
        QCOMPARE(bareRead->windowFrame(), u""_s);
        QVERIFY(!bareRead->windowFrame().isNull());
        QCOMPARE(bareRead->dateCreated(), m_scheduler->currentDateTime());
        QCOMPARE(bareRead->themeName(), u"SNYellowPadTheme"_s); // empty name, resolved
    }

    void missingAndDamagedKeys()
    {
        const Note note = SNStickyNote::note();
        note->setAttributedString(QWAttributedString(u"text"_s));
        note->setWindowAlpha(0.5);
        const auto without = [&](const QString &key) {
            QWArchiveValue::Entries entries = QWKeyedArchiver::archivedValue(note).entries();
            std::erase_if(
                entries, [&](const QWArchiveValue::Entry &entry) { return entry.first == key; });
            return decoded(QWArchiveValue::fromObject(SNStickyNote::className(), entries));
        };
        QCOMPARE(without(u"windowAlpha"_s)->windowAlpha(), 0.0);
        QVERIFY(!without(u"data"_s)->attributedString());
        QVERIFY(without(u"windowFrame"_s)->windowFrame().isNull());

        // Wrong kinds and values out of range read as missing or as the nearest sane value.
        QWArchiveValue damaged = QWKeyedArchiver::archivedValue(note);
        damaged.setValueForKey(u"pinState"_s, QWArchiveValue::fromInteger(99));
        damaged.setValueForKey(u"windowAlpha"_s, QWArchiveValue::fromDouble(7.5));
        damaged.setValueForKey(u"data"_s, QWArchiveValue::fromData("garbage"));
        damaged.setValueForKey(u"dateCreated"_s, QWArchiveValue::fromString(u"yesterday"_s));
        damaged.setValueForKey(u"tags"_s, QWArchiveValue::fromString(u"#a"_s));
        const Note read = decoded(damaged);
        QCOMPARE(read->pinState(), 99); // the window treats it as normal; the archive keeps it
        QCOMPARE(read->windowAlpha(), 1.0);
        QVERIFY(!read->attributedString());
        QVERIFY(!read->dateCreated());
        QVERIFY(read->tags().isEmpty());
    }

    // A note keeps the theme name it stored, and archives it so, whatever theme it shows.
    void themeResolution()
    {
        auto note = std::make_shared<SNStickyNote>();
        note->setThemeName(u"SNNoSuchTheme"_s);
        QCOMPARE(note->theme()->className(), u"SNYellowPadTheme"_s);
        QCOMPARE(note->themeName(), u"SNNoSuchTheme"_s);

        SNUserDefaults::standardUserDefaults().setDefaultThemeName(u"SNDarkTheme"_s);
        note->setThemeName(QString());
        QCOMPARE(note->themeName(), u"SNDarkTheme"_s);
        QCOMPARE(note->theme()->className(), u"SNDarkTheme"_s);
        SNUserDefaults::standardUserDefaults().setDefaultThemeName(QString());

        // A user theme is the registry's own object.
        auto ocean = SNUserTheme::theme();
        ocean->setName(u"Ocean"_s);
        SNThemeManager::sharedManager().addTheme(ocean);
        note->setThemeName(u"SNUserTheme-Ocean"_s);
        QCOMPARE(note->theme(), std::static_pointer_cast<SNTheme>(ocean));
        SNThemeManager::sharedManager().removeTheme(ocean);
        note->updateTheme();
        QCOMPARE(note->theme()->className(), u"SNYellowPadTheme"_s);
    }

    void followsThemeRenames()
    {
        const Note note = SNStickyNote::note();
        note->setThemeName(u"SNUserTheme-Work"_s);

        QWNotificationCenter &center = QWNotificationCenter::defaultCenter();
        center.postNotificationNameObjectUserInfo(SNStickyNote::themeNameDidChangeNotification,
            nullptr, { { u"newName"_s, u"SNUserTheme-Play"_s } });
        QCOMPARE(note->themeName(), u"SNUserTheme-Work"_s);

        center.postNotificationNameObjectUserInfo(SNStickyNote::themeNameDidChangeNotification,
            nullptr,
            { { u"oldName"_s, u"SNUserTheme-Work"_s }, { u"newName"_s, u"SNUserTheme-Play"_s } });
        QCOMPARE(note->themeName(), u"SNUserTheme-Play"_s);
    }

private:
    std::unique_ptr<QWTestEnvironment> m_environment;
    std::unique_ptr<QWManualScheduler> m_scheduler;
};

QTEST_APPLESS_MAIN(TestSNStickyNote)
#include "TestSNStickyNote.moc"
