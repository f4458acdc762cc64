#include "AuriskSDK/Platform/Manual/ManualDispatchQueue.h"
#include "Benchmarks/Measure.h"
#include "Tests/Support/PlayedAid.h"

#include <cmath>

namespace aurisk::benchmarks {

namespace {

constexpr int batch = 1000;
constexpr Seconds pauseBeforeSending{ 0.1 };

/// One connected hearing aid whose link takes no time.
class AnsweringAid {
public:
    explicit AnsweringAid(ManualDispatchQueue& queue)
    {
        CBAdvertisementData advertisement;
        advertisement.manufacturerData = Data{ 0xFE, 0xFE, 0x0A, 0x1B, 0x2C, 0x3D, 0x4E, 0x5F, 0x08, 0x06 };
        _radio.hear(_peripheral, advertisement);
        accessory = std::dynamic_pointer_cast<AuriskAccessory>(_radio.manager->accessories().at(0));
        _radio.connect(_peripheral, *accessory);

        // Program 0 has the volume 7.
        const Data reply{ 0x00, 0xFE, 0x68, 0x91, 0x03, 0x01, 0x04, 0x07, 0x08, 0x16 };
        _peripheral->onWrite = [weak = _peripheral->weak_from_this(), &queue, reply](DataView) {
            queue.async([weak, reply] {
                if (const auto peripheral = weak.lock())
                    peripheral->notify(peripheral->replies, reply);
            });
        };
    }

    std::shared_ptr<AuriskAccessory> accessory;

private:
    std::shared_ptr<tests::PlayedAid> _peripheral = tests::PlayedAid::create(CBUUID(0x0001), "X1-L");
    tests::PlayedRadio _radio;
};

/// The work that a request needs of any queue: the pause, the reply, its delivery, and the time limit.
void queueAlone(ManualDispatchQueue& queue, const std::shared_ptr<int>& holder)
{
    queue.asyncAfter(pauseBeforeSending, [&queue, holder] {
        queue.async([&queue, holder] { queue.async([holder] { ++*holder; }); });
        queue.asyncAfter(Seconds(3), [holder] { benchmark::DoNotOptimize(*holder); });
    });
    queue.advance(pauseBeforeSending);
}

void request(benchmark::State& state)
{
    state.SetLabel("baseline: the queue alone; target: 50,000 ns, and no virtual time beyond the pause");
    ManualDispatchQueue queue, queueOfBaseline;
    const ScopedMainQueue scope(queue);
    const AnsweringAid aid(queue);
    const auto holder = std::make_shared<int>(0);

    std::int64_t answered = 0;
    Seconds lastAnswer{ 0 };
    const auto start = queue.now();
    compare(
        state, batch,
        [&] {
            aid.accessory->request(AuriskRequest::readVolume{ .program = 0 }, [&](const AuriskResult& result) {
                answered += result.isSuccess();
                lastAnswer = queue.now();
            });
            queue.advance(pauseBeforeSending);
        },
        [&] { queueAlone(queueOfBaseline, holder); });

    const auto pauses = static_cast<double>(answered) * pauseBeforeSending;
    state.counters["virtual_ns_late"] = std::round((lastAnswer - start - pauses) / std::chrono::nanoseconds(1));
    if (answered != state.iterations())
        state.SkipWithError("a request was not answered");
}

BENCHMARK(request)->Name("request and reply")->UseManualTime();

} // namespace

} // namespace aurisk::benchmarks
