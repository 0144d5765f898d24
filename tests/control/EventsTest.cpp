// Events through the connection point: cookies, order, every sink, the
// byte-exact record behind ItemSel's VARIANT, freezing, and sinks that
// disconnect while an event is under way.
#include <cstring>

#include "ControlTestEnvironment.h"
#include "control/LumbrelIds.h"

namespace controltest {
namespace {

class EventsTest : public ControlFixture {
protected:
    ComPtr<IConnectionPoint> Point() const {
        ComPtr<IConnectionPoint> point;
        As<IConnectionPointContainer>(IID_IConnectionPointContainer)
            ->FindConnectionPoint(DIID__DLumbrelEvents, point.Put());
        return point;
    }
    std::vector<RecordedEvent> events;
};

TEST_F(EventsTest, OffersOneConnectionPointForTheEventInterface) {
    auto container = As<IConnectionPointContainer>(IID_IConnectionPointContainer);
    ComPtr<IConnectionPoint> point;
    ASSERT_EQ(S_OK, container->FindConnectionPoint(DIID__DLumbrelEvents, point.Put()));
    IID iid = {};
    ASSERT_EQ(S_OK, point->GetConnectionInterface(&iid));
    EXPECT_TRUE(IsEqualIID(DIID__DLumbrelEvents, iid));
    ComPtr<IConnectionPointContainer> back;
    ASSERT_EQ(S_OK, point->GetConnectionPointContainer(back.Put()));
    EXPECT_EQ(container.Get(), back.Get());

    ComPtr<IConnectionPoint> none;
    EXPECT_EQ(CONNECT_E_NOCONNECTION, container->FindConnectionPoint(IID_IPropertyNotifySink, none.Put()));
    EXPECT_EQ(CONNECT_E_NOCONNECTION, container->FindConnectionPoint(DIID__DLumbrel, none.Put()));
    EXPECT_EQ(E_POINTER, container->FindConnectionPoint(DIID__DLumbrelEvents, nullptr));

    ComPtr<IEnumConnectionPoints> all;
    ASSERT_EQ(S_OK, container->EnumConnectionPoints(all.Put()));
    IConnectionPoint* points[2] = {};
    ULONG fetched = 0;
    EXPECT_EQ(S_FALSE, all->Next(2, points, &fetched));
    ASSERT_EQ(1u, fetched);
    EXPECT_EQ(point.Get(), points[0]);
    points[0]->Release();
}

TEST_F(EventsTest, CookiesAreDistinctAndChecked) {
    auto* first = new EventRecorder(&events, "first");
    auto* second = new EventRecorder(&events, "second");
    HRESULT hr = E_FAIL;
    const DWORD a = AdviseEvents(Unknown(), first, &hr);
    ASSERT_EQ(S_OK, hr);
    const DWORD b = AdviseEvents(Unknown(), second, &hr);
    ASSERT_EQ(S_OK, hr);
    EXPECT_NE(0u, a);
    EXPECT_NE(0u, b);
    EXPECT_NE(a, b);

    ComPtr<IEnumConnections> connections;
    ASSERT_EQ(S_OK, Point()->EnumConnections(connections.Put()));
    CONNECTDATA data[3] = {};
    ULONG fetched = 0;
    EXPECT_EQ(S_FALSE, connections->Next(3, data, &fetched));
    ASSERT_EQ(2u, fetched);
    EXPECT_EQ(a, data[0].dwCookie);
    EXPECT_EQ(b, data[1].dwCookie);
    data[0].pUnk->Release();
    data[1].pUnk->Release();
    connections.Reset();

    EXPECT_EQ(CONNECT_E_NOCONNECTION, UnadviseEvents(Unknown(), 0));
    EXPECT_EQ(CONNECT_E_NOCONNECTION, UnadviseEvents(Unknown(), a + b + 100));
    EXPECT_EQ(S_OK, UnadviseEvents(Unknown(), a));
    EXPECT_EQ(CONNECT_E_NOCONNECTION, UnadviseEvents(Unknown(), a)) << "a cookie works once";
    // Only the second hears the next event.
    control->Events()->FireItemDBClick();
    ASSERT_EQ(1u, events.size());
    EXPECT_EQ("second", events[0].sink);
    EXPECT_EQ(S_OK, UnadviseEvents(Unknown(), b));
    EXPECT_EQ(1, first->References());
    first->Release();
    second->Release();
}

TEST_F(EventsTest, AdviseRefusesWhatIsNoSink) {
    DWORD cookie = 7;
    EXPECT_EQ(E_POINTER, Point()->Advise(nullptr, &cookie));
    EXPECT_EQ(E_POINTER, Point()->Advise(static_cast<IOleClientSite*>(site), nullptr));
    EXPECT_EQ(CONNECT_E_CANNOTCONNECT, Point()->Advise(static_cast<IOleClientSite*>(site), &cookie));
    EXPECT_EQ(0u, cookie);
}

TEST_F(EventsTest, ItemSelCarriesTheRecordByReferenceToEverySinkInOrder) {
    auto* first = new EventRecorder(&events, "first");
    auto* second = new EventRecorder(&events, "second");
    const DWORD a = AdviseEvents(Unknown(), first);
    const DWORD b = AdviseEvents(Unknown(), second);
    control->itemInfo = SampleRecord();

    control->FireItemSelFromDialog(control->ItemInfo());
    control->Events()->FireItemDBClick();

    ASSERT_EQ(4u, events.size());
    const char* order[] = {"first", "second", "first", "second"};
    for (size_t i = 0; i < 4; ++i) EXPECT_EQ(order[i], events[i].sink);
    for (size_t i = 0; i < 2; ++i) {
        EXPECT_EQ(control::kDispidItemSel, events[i].dispid);
        ASSERT_EQ(1u, events[i].argumentCount);
        EXPECT_EQ(0x4000, events[i].argumentType) << "VT_BYREF alone";
        EXPECT_EQ(static_cast<void*>(&control->itemInfo), events[i].reference) << "the record itself";
        EXPECT_EQ(0, std::memcmp(&control->itemInfo, &events[i].record, 532));
    }
    for (size_t i = 2; i < 4; ++i) {
        EXPECT_EQ(control::kDispidItemDBClick, events[i].dispid);
        EXPECT_EQ(0u, events[i].argumentCount);
    }
    // The bytes of the record, as the host reads them.
    const auto& record = events[0].record;
    EXPECT_EQ(1, record.valid);
    EXPECT_EQ(3, record.itemNumber);
    EXPECT_STREQ("C:\\art\\cats.QLT", record.path);
    EXPECT_STREQ("tabby.jpg", record.name);
    EXPECT_EQ('P', record.path[258]);
    EXPECT_EQ('N', record.name[262]);

    UnadviseEvents(Unknown(), a);
    UnadviseEvents(Unknown(), b);
    first->Release();
    second->Release();
}

TEST_F(EventsTest, ALocalRecordIsPassedAsItIs) {
    auto* sink = new EventRecorder(&events, "sink");
    const DWORD cookie = AdviseEvents(Unknown(), sink);
    browser::GraphicItemInfo local = browser::EmptyItemInfo();
    control->FireItemSelFromDialog(local);
    ASSERT_EQ(1u, events.size());
    EXPECT_EQ(static_cast<void*>(&local), events[0].reference);
    const browser::GraphicItemInfo zero = {};
    EXPECT_EQ(0, std::memcmp(&zero, &events[0].record, sizeof zero));
    UnadviseEvents(Unknown(), cookie);
    sink->Release();
}

TEST_F(EventsTest, FrozenEventsAreNotFired) {
    auto* sink = new EventRecorder(&events, "sink");
    const DWORD cookie = AdviseEvents(Unknown(), sink);
    auto controlInterface = As<IOleControl>(IID_IOleControl);
    ASSERT_EQ(S_OK, controlInterface->FreezeEvents(TRUE));
    control->Events()->FireItemDBClick();
    EXPECT_TRUE(events.empty());
    ASSERT_EQ(S_OK, controlInterface->FreezeEvents(FALSE));
    control->Events()->FireItemDBClick();
    EXPECT_EQ(1u, events.size());
    UnadviseEvents(Unknown(), cookie);
    sink->Release();
}

struct Disconnection {
    IUnknown* control;
    DWORD cookie;
};

TEST_F(EventsTest, ASinkThatDisconnectsDuringAnEventDoesNotDisturbTheOthers) {
    auto* leaving = new EventRecorder(&events, "leaving");
    auto* staying = new EventRecorder(&events, "staying");
    Disconnection disconnection = {Unknown(), 0};
    disconnection.cookie = AdviseEvents(Unknown(), leaving);
    const DWORD stays = AdviseEvents(Unknown(), staying);
    leaving->context = &disconnection;
    leaving->onEvent = [](EventRecorder*, void* context) {
        auto* d = static_cast<Disconnection*>(context);
        UnadviseEvents(d->control, d->cookie);
    };
    leaving->Release();  // the connection point now holds the last reference

    control->Events()->FireItemDBClick();
    ASSERT_EQ(2u, events.size());
    EXPECT_EQ("leaving", events[0].sink);
    EXPECT_EQ("staying", events[1].sink);
    control->Events()->FireItemDBClick();
    ASSERT_EQ(3u, events.size());
    EXPECT_EQ("staying", events[2].sink);
    UnadviseEvents(Unknown(), stays);
    staying->Release();
}

TEST_F(EventsTest, SinksAreLetGoWhenTheControlGoes) {
    auto* sink = new EventRecorder(&events, "sink");
    AdviseEvents(Unknown(), sink);
    EXPECT_EQ(2, sink->References());
    control->Release();
    control = nullptr;
    EXPECT_EQ(1, sink->References());
    sink->Release();
}

}  // namespace
}  // namespace controltest
