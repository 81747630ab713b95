#include "kit/QWKeyedArchiver.h"
#include "kit/QWKeyedUnarchiver.h"
#include "kit/QWNotificationCenter.h"
#include "notes/SNStickyNote.h"
#include "support/QWManualScheduler.h"
#include "support/QWTestEnvironment.h"
#include "tags/SNTag.h"
#include "tags/SNTagManager.h"

#include <QTest>

namespace {

QStringList names(const QList<std::shared_ptr<SNTag>> &tags)
{
    QStringList result;
    for (const std::shared_ptr<SNTag> &tag : tags)
        result.append(tag->name());
    return result;
}

std::shared_ptr<SNTag> newTag(const QString &name)
{
    return SNTag::tagWithNameColor(name, QWColor::qw_randomColor());
}

} // namespace

class TestSNTagManager final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void namesAreExactButSortedWithoutCase();
    void addingUsesTheKnownTagOfAName();
    void oneNotificationHalfASecondAfterABurst();
    void tagsLeaveWithTheirLastNote();
    void loadedNotesShareTagObjects();
    void archiveForm();

private:
    std::unique_ptr<QWTestEnvironment> m_environment;
    std::unique_ptr<QWManualScheduler> m_scheduler;
};

void TestSNTagManager::init()
{
    m_environment = std::make_unique<QWTestEnvironment>();
    m_scheduler = std::make_unique<QWManualScheduler>();
}

void TestSNTagManager::cleanup()
{
    SNTagManager &index = SNTagManager::sharedManager();
    for (const std::shared_ptr<SNTag> &tag : index.tags())
        index.removeTag(tag);
    m_scheduler->advanceBy(1.0);
    m_scheduler.reset();
    m_environment.reset();
}

void TestSNTagManager::namesAreExactButSortedWithoutCase()
{
    SNTagManager &index = SNTagManager::sharedManager();
    QVERIFY(!index.tagWithName(QStringLiteral("#work"))); // empty index
    QVERIFY(!index.tagWithName(QString()));
    for (const char *name : { "#work", "#Zebra", "#apple", "#Work", "#banana" })
        index.addTag(newTag(QString::fromUtf8(name)));
    QCOMPARE(index.count(), 5);
    QVERIFY(
        index.tagWithName(QStringLiteral("#work")) != index.tagWithName(QStringLiteral("#Work")));
    QCOMPARE(index.tagWithName(QStringLiteral("#Work"))->name(), QStringLiteral("#Work"));
    QVERIFY(!index.tagWithName(QStringLiteral("#WORK")));
    QVERIFY(!index.tagWithName(QStringLiteral("work")));
    // #work and #Work stand next to each other, in the order they were added.
    QCOMPARE(names(index.tags()),
        (QStringList { QStringLiteral("#apple"), QStringLiteral("#banana"), QStringLiteral("#work"),
            QStringLiteral("#Work"), QStringLiteral("#Zebra") }));
}

void TestSNTagManager::addingUsesTheKnownTagOfAName()
{
    SNTagManager &index = SNTagManager::sharedManager();
    const std::shared_ptr<SNTag> known = newTag(QStringLiteral("#home"));
    index.addTag(known);
    index.addTag(newTag(QStringLiteral("#home"))); // a stranger of the same name is not entered
    QCOMPARE(index.count(), 1);
    index.addTag(known); // nor the same object twice
    QCOMPARE(index.count(), 1);

    const std::shared_ptr<SNTag> stranger = newTag(QStringLiteral("#home"));
    const std::shared_ptr<SNTag> fresh = newTag(QStringLiteral("#garden"));
    const QList<std::shared_ptr<SNTag>> added = index.addTags({ stranger, fresh });
    QCOMPARE(added.size(), 2);
    QCOMPARE(added[0], known);
    QCOMPARE(added[1], fresh);
    QCOMPARE(index.count(), 2);

    // All lookups of one call come first: two new tags of one name both enter.
    const std::shared_ptr<SNTag> first = newTag(QStringLiteral("#twin"));
    const std::shared_ptr<SNTag> second = newTag(QStringLiteral("#twin"));
    const QList<std::shared_ptr<SNTag>> twins = index.addTags({ first, second });
    QCOMPARE(twins, (QList<std::shared_ptr<SNTag>> { first, second }));
    QCOMPARE(index.count(), 4);
    QCOMPARE(index.tagWithName(QStringLiteral("#twin")), first); // the earliest added
    index.removeTag(first);
    QCOMPARE(index.tagWithName(QStringLiteral("#twin")), second);
}

void TestSNTagManager::oneNotificationHalfASecondAfterABurst()
{
    QList<double> postedAt;
    QWNotificationCenter::Observation observation
        = QWNotificationCenter::defaultCenter().observeNameObjectHandler(
            SNTagManager::updatedTagsNotification, nullptr,
            [&](const QWNotification &notification) {
                QVERIFY(!notification.object);
                postedAt.append(m_scheduler->now());
            });
    SNTagManager &index = SNTagManager::sharedManager();
    for (int i = 0; i < 10; ++i) {
        index.addTag(newTag(QStringLiteral("#t%1").arg(i)));
        m_scheduler->advanceBy(0.04);
    }
    m_scheduler->advanceBy(0.45);
    QVERIFY(postedAt.isEmpty()); // 0.49 s after the last change
    m_scheduler->advanceBy(5.0);
    QCOMPARE(postedAt.size(), 1);
    QVERIFY(qAbs(postedAt.first() - (0.36 + 0.5)) < 1e-6);
}

void TestSNTagManager::tagsLeaveWithTheirLastNote()
{
    SNTagManager &index = SNTagManager::sharedManager();
    const std::shared_ptr<SNTag> tag = newTag(QStringLiteral("#errands"));
    index.addTag(tag);
    auto first = std::make_shared<SNStickyNote>();
    auto second = std::make_shared<SNStickyNote>();
    auto stranger = std::make_shared<SNStickyNote>();
    first->setTags({ tag });
    second->setTags({ tag });
    QCOMPARE(tag->notes().size(), 2);

    tag->removeNote(stranger.get()); // not a member, the set is not empty: nothing changes
    QCOMPARE(index.tagWithName(QStringLiteral("#errands")), tag);
    first->setTags({}); // loses the tag
    QVERIFY(first->tags().isEmpty());
    QCOMPARE(tag->notes(), QList<std::shared_ptr<SNStickyNote>> { second });
    QCOMPARE(index.count(), 1);
    second->didDelete(); // the last note leaves
    QCOMPARE(index.count(), 0);
    QVERIFY(!index.tagWithName(QStringLiteral("#errands")));
    QCOMPARE(second->tags().size(), 1); // a deleted note keeps its own list

    // A tag written again after it left is a new tag.
    index.addTag(newTag(QStringLiteral("#errands")));
    QVERIFY(index.tagWithName(QStringLiteral("#errands")) != tag);
}

void TestSNTagManager::loadedNotesShareTagObjects()
{
    const auto makeNote = [](const QString &text) {
        auto note = std::make_shared<SNStickyNote>();
        note->setAttributedString(QWAttributedString(text));
        note->setTags({ newTag(QStringLiteral("#shopping")) });
        return note;
    };
    // Two notes written with two tag objects of one name...
    const QByteArray archive = QWKeyedArchiver::archivedDataWithRootObject(
        QList<std::shared_ptr<SNStickyNote>> { makeNote(QStringLiteral("milk #shopping")),
            makeNote(QStringLiteral("bread #shopping")) });
    for (const std::shared_ptr<SNTag> &tag : SNTagManager::sharedManager().tags())
        SNTagManager::sharedManager().removeTag(tag);

    // ...read back as one tag that knows both notes.
    const QList<std::shared_ptr<SNStickyNote>> notes
        = QWKeyedUnarchiver::decodeArrayOfObjectsOfClass<std::shared_ptr<SNStickyNote>>(
            QWKeyedUnarchiver::parse(archive).root);
    QCOMPARE(notes.size(), 2);
    QCOMPARE(SNTagManager::sharedManager().count(), 1);
    const std::shared_ptr<SNTag> shared
        = SNTagManager::sharedManager().tagWithName(QStringLiteral("#shopping"));
    QCOMPARE(notes[0]->tags().value(0), shared);
    QCOMPARE(notes[1]->tags().value(0), shared);
    QCOMPARE(shared->notes().size(), 2);
}

void TestSNTagManager::archiveForm()
{
    const std::shared_ptr<SNTag> tag
        = SNTag::tagWithNameColor(QStringLiteral("#Ünïcode"), QWColor(0.2, 0.4, 0.6));
    const QWArchiveValue value = QWKeyedArchiver::archivedValue(tag);
    QCOMPARE(value.className(), QStringLiteral("SNTag"));
    QCOMPARE(value.entries().size(), size_t(2));
    QCOMPARE(value.entries()[0].first, QStringLiteral("name"));
    QCOMPARE(value.entries()[1].first, QStringLiteral("color"));
    const auto read = QWKeyedUnarchiver::decodeObjectOfClass<std::shared_ptr<SNTag>>(value);
    QVERIFY(read);
    QCOMPARE((*read)->name(), tag->name());
    QCOMPARE((*read)->tagColor(), tag->tagColor());
    QVERIFY((*read)->notes().isEmpty());
    QVERIFY(tag->description().contains(QStringLiteral(" name=#Ünïcode color=")));

    // Without a name there is no tag; without a colour it gets a fresh one.
    QVERIFY(!QWKeyedUnarchiver::decodeObjectOfClass<std::shared_ptr<SNTag>>(
        QWArchiveValue::fromObject(QStringLiteral("SNTag"), {})));
    const auto colourless = QWKeyedUnarchiver::decodeObjectOfClass<std::shared_ptr<SNTag>>(
        QWArchiveValue::fromObject(QStringLiteral("SNTag"),
            { { QStringLiteral("name"), QWArchiveValue::fromString(QStringLiteral("#x")) } }));
    QVERIFY(colourless);
    QVERIFY((*colourless)->tagColor().hsb().saturation >= 0.7 - 1e-9);
}

QTEST_MAIN(TestSNTagManager)
#include "TestSNTagManager.moc"
