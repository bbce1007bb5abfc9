#include "common/Listener_Slot.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <thread>

namespace {

// Writes down what it is told.
class Listener {
public:
    explicit Listener(std::string& log, char name) : m_log(log), m_name(name) {}

    ~Listener() { m_log += {'~', m_name}; }

    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    void burst_begins() { m_log += {'(', m_name}; }

    void burst_ends() { m_log += {')', m_name}; }

    void take() { m_log += m_name; }

private:
    std::string& m_log;
    char m_name;
};

class Listener_Slot : public testing::Test {
protected:
    bool deliver() {
        return m_slot.deliver([](Listener& listener) { listener.take(); });
    }

    std::string m_log;
    Pelgar::ORBE::Listener_Slot<Listener> m_slot;
    std::shared_ptr<Listener> m_a = std::make_shared<Listener>(m_log, 'a');
    std::shared_ptr<Listener> m_b = std::make_shared<Listener>(m_log, 'b');
};

TEST_F(Listener_Slot, DeliversToWhoeverIsThere) {
    EXPECT_FALSE(deliver());
    m_slot.set(m_a);
    EXPECT_TRUE(deliver());
    m_slot.set(m_b);
    EXPECT_TRUE(deliver());
    m_b.reset();
    EXPECT_FALSE(deliver());
    EXPECT_EQ(m_log, "ab~b");
}

TEST_F(Listener_Slot, TellsTheListenerOfABurst) {
    m_slot.set(m_a);
    m_slot.begin_burst();
    EXPECT_TRUE(deliver());
    EXPECT_TRUE(deliver());
    EXPECT_EQ(m_a.use_count(), 1) << "nobody but its owner keeps it";
    m_slot.end_burst();
    EXPECT_EQ(m_a.use_count(), 1);
    EXPECT_TRUE(deliver());
    EXPECT_EQ(m_log, "(aaa)aa");
}

TEST_F(Listener_Slot, AListenerThatIsSetInABurstGetsTheRestOfIt) {
    m_slot.set(m_a);
    m_slot.begin_burst();
    EXPECT_TRUE(deliver());
    m_slot.set(m_b);
    EXPECT_TRUE(deliver());
    m_slot.set({});
    EXPECT_FALSE(deliver());
    m_slot.set(m_a);
    EXPECT_TRUE(deliver());
    m_slot.end_burst();
    EXPECT_EQ(m_log, "(aa)a(bb)b(aa)a");
    EXPECT_EQ(m_b.use_count(), 1);
}

TEST_F(Listener_Slot, ABurstDoesNotKeepAListenerThatItsOwnerLetsGo) {
    m_slot.set(m_a);
    m_slot.begin_burst();
    EXPECT_TRUE(deliver());
    m_a.reset();
    EXPECT_FALSE(deliver());
    EXPECT_FALSE(deliver());
    m_slot.end_burst();
    EXPECT_EQ(m_log, "(aa~a");
}

TEST_F(Listener_Slot, BurstsOfSeveralStagesDoNotKeepAListenerForOneAnother) {
    Pelgar::ORBE::Listener_Slot<Listener> other;
    m_slot.set(m_a);
    other.set(m_a);
    m_slot.begin_burst();
    other.begin_burst();
    EXPECT_TRUE(deliver());
    m_a.reset();
    EXPECT_FALSE(deliver());
    EXPECT_FALSE(other.deliver([](Listener& listener) { listener.take(); }));
    m_slot.end_burst();
    other.end_burst();
    EXPECT_EQ(m_log, "(a(aa~a");
}

TEST_F(Listener_Slot, AnotherThreadDeliversBesideABurst) {
    m_slot.set(m_a);
    m_slot.begin_burst();
    std::thread([&] {
        m_slot.begin_burst();
        EXPECT_TRUE(deliver());
        m_slot.end_burst();
    }).join();
    EXPECT_TRUE(deliver());
    m_slot.end_burst();
    EXPECT_EQ(m_log, "(aaa)a") << "one burst, that of the first thread";
}

TEST_F(Listener_Slot, ABurstWithoutAListenerIsNoBurstForTheOneThatComesLater) {
    m_slot.begin_burst();
    EXPECT_FALSE(deliver());
    m_slot.end_burst();
    m_slot.set(m_a);
    EXPECT_TRUE(deliver());
    EXPECT_EQ(m_log, "a");
}

} // namespace
