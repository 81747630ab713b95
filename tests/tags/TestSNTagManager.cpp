#include "kit/QWKeyedUnarchiver.h"
#include "notes/SNStickyNote.h"
#include "support/QWManualScheduler.h"
#include "support/QWTestEnvironment.h"
#include "tags/SNTag.h"
#include "tags/SNTagManager.h"

#include <QTest>

using namespace Qt::Literals::StringLiterals;

namespace {

using Tags = QList<std::shared_ptr<SNTag>>;

QStringList names(const Tags &tags)
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
    void init()
    {
        m_environment = std::make_unique<QWTestEnvironment>();
        m_scheduler = std::make_unique<QWManualScheduler>();
    }

    void cleanup()
    {
        for (const std::shared_ptr<SNTag> &tag : index().tags())
            index().removeTag(tag);
        m_scheduler->advanceBy(1.0);
        m_scheduler.reset();
        m_environment.reset();
    }

    void namesAreExactButSortedWithoutCase()
    {
        QVERIFY(!index().tagWithName(u"#work"_s)); // empty index
        for (const QString &name :
            { u"#work"_s, u"#Zebra"_s, u"#apple"_s, u"#Work"_s, u"#banana"_s })
            index().addTag(newTag(name));
        QVERIFY(index().tagWithName(u"#work"_s) != index().tagWithName(u"#Work"_s));
        QCOMPARE(index().tagWithName(u"#Work"_s)->name(), u"#Work"_s);
        QVERIFY(!index().tagWithName(u"#WORK"_s));
        QVERIFY(!index().tagWithName(u"work"_s));
        // #work and #Work stand next to each other, in the order they were added.
        QCOMPARE(names(index().tags()),
            (QStringList { u"#apple"_s, u"#banana"_s, u"#work"_s, u"#Work"_s, u"#Zebra"_s }));
    }

    void addingUsesTheKnownTagOfAName()
    {
        const std::shared_ptr<SNTag> known = newTag(u"#home"_s);
        index().addTag(known);
        index().addTag(newTag(u"#home"_s)); // a stranger of the same name is not entered
        index().addTag(known); // nor the same object twice
        QCOMPARE(index().count(), 1);
        const std::shared_ptr<SNTag> fresh = newTag(u"#garden"_s);
        QCOMPARE(index().addTags({ newTag(u"#home"_s), fresh }), (Tags { known, fresh }));

        // All lookups of one call come first: two new tags of one name both enter.
        const Tags twins { newTag(u"#twin"_s), newTag(u"#twin"_s) };
        QCOMPARE(index().addTags(twins), twins);
        QCOMPARE(index().count(), 4);
        QCOMPARE(index().tagWithName(u"#twin"_s), twins[0]); // the earliest added
        index().removeTag(twins[0]);
        QCOMPARE(index().tagWithName(u"#twin"_s), twins[1]);
    }

    void tagsLeaveWithTheirLastNote()
    {
        const std::shared_ptr<SNTag> tag = newTag(u"#errands"_s);
        index().addTag(tag);
        auto first = std::make_shared<SNStickyNote>();
        auto second = std::make_shared<SNStickyNote>();
        first->setTags({ tag });
        second->setTags({ tag });
        tag->removeNote(std::make_shared<SNStickyNote>().get()); // not a member: nothing changes
        first->setTags({});
        QCOMPARE(tag->notes(), QList<std::shared_ptr<SNStickyNote>> { second });
        QCOMPARE(index().count(), 1);
        second->didDelete(); // the last note leaves
        QCOMPARE(index().count(), 0);
        QCOMPARE(second->tags().size(), 1); // a deleted note keeps its own list
    }

    void damagedArchives()
    {
        // Without a name there is no tag; without a colour it gets a fresh one.
        QVERIFY(!QWKeyedUnarchiver::decodeObjectOfClass<std::shared_ptr<SNTag>>(
            QWArchiveValue::fromObject(u"SNTag"_s, {})));
        const auto colourless = QWKeyedUnarchiver::decodeObjectOfClass<std::shared_ptr<SNTag>>(
            QWArchiveValue::fromObject(
                u"SNTag"_s, { { u"name"_s, QWArchiveValue::fromString(u"#x"_s) } }));
        QVERIFY((*colourless)->tagColor().hsb().saturation >= 0.7 - 1e-9);
    }

private:
    static SNTagManager &index() { return SNTagManager::sharedManager(); }
    std::unique_ptr<QWTestEnvironment> m_environment;
    std::unique_ptr<QWManualScheduler> m_scheduler;
};

QTEST_APPLESS_MAIN(TestSNTagManager)
#include "TestSNTagManager.moc"
