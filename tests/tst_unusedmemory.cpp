// What a test needed is the system's again when the test is over.
#include "app/unusedmemory.h"
#include "resources/vexaresources.h"
#include "tests/support/ownmemory.h"
#include "tests/support/testhome.h"
#include "tests/support/windowcase.h"

#include <algorithm>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace {

constexpr double storeMb = 32.0;

/// Leaves what a receiver's thread leaves: much free memory below a little that is still in use.
class FreeStore final {
public:
    FreeStore()
    {
        constexpr std::size_t blockBytes = 64 * 1024; // not as large as those that go back at once
        std::thread receiver([this] {
            std::vector<std::unique_ptr<char[]>> blocks;
            for (int i = 0; i < int(storeMb * 1024 * 1024 / blockBytes); ++i) {
                blocks.emplace_back(new char[blockBytes]);
                std::fill_n(blocks.back().get(), blockBytes, 'x');
            }
            m_inUse = std::make_unique<char[]>(blockBytes);
        });
        receiver.join();
    }

private:
    std::unique_ptr<char[]> m_inUse;
};

} // namespace

class TestUnusedMemory final : public TestBase {
    Q_OBJECT

private slots:
    void initTestCase();
    void threadsShareTheirStores();
    void freeMemoryGoesBack();
    void theEndOfATestGivesItBack();

private:
    TestHome m_home;
};

void TestUnusedMemory::initTestCase()
{
    initVexaResources();
    QVERIFY(m_home.use());
}

/// What many threads at once leave, one picture each.
void TestUnusedMemory::threadsShareTheirStores()
{
    constexpr int threads = 12;
    constexpr int pictureBytes = 4 << 20;
    keepFewMemoryStores();
    returnUnusedMemory();
    QByteArray(pictureBytes + 4096, 'x').clear(); // from now on blocks of this size come from the stores
    const double beforeMb = ownMemoryMb();
    std::vector<std::thread> receivers;
    std::mutex mutex;
    std::condition_variable wake;
    int done = 0;
    for (int i = 0; i < threads; ++i) {
        receivers.emplace_back([&] {
            // Each has its picture by turns, and all are there before the first one ends, or they would take each
            // other's store.
            std::unique_lock<std::mutex> locker(mutex);
            QByteArray(pictureBytes, 'x').clear();
            ++done;
            wake.notify_all();
            wake.wait(locker, [&] { return done == threads; });
        });
    }
    for (std::thread &receiver : receivers)
        receiver.join();
    returnUnusedMemory();
    QVERIFY2(ownMemoryMb() < beforeMb + 20, qPrintable(QString::number(ownMemoryMb() - beforeMb)));
}

void TestUnusedMemory::freeMemoryGoesBack()
{
    const double beforeMb = ownMemoryMb();
    const FreeStore store;
    QVERIFY(ownMemoryMb() > beforeMb + storeMb / 2); // the C library has kept it
    returnUnusedMemory();
    QVERIFY(ownMemoryMb() < beforeMb + storeMb / 4);
}

void TestUnusedMemory::theEndOfATestGivesItBack()
{
    WindowCase test(1);
    QVERIFY(test.isReady(1));
    test.ndi.setScript(framesWithoutEnd());
    test.press();
    QTRY_VERIFY(test.ui().L4->text().endsWith(QStringLiteral("fps")));
    const double beforeMb = ownMemoryMb();
    const FreeStore store;
    QVERIFY(ownMemoryMb() > beforeMb + storeMb / 2);
    test.press();
    QTRY_VERIFY(test.isIdle());
    QTRY_VERIFY(ownMemoryMb() < beforeMb + storeMb / 2);
}

QTEST_MAIN(TestUnusedMemory)
#include "tst_unusedmemory.moc"
