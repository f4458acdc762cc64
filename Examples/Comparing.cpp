#include "Listener.h"

#include <Simulator/Simulator.h>
#include <algorithm>
#include <iostream>

using namespace aurisk;

/// Gives the right one of a pair of PL3 hearing aids a stronger compression in its lowest channel, then reads how both
/// compress and says where they differ.
class Comparing {
public:
    void begin(const std::shared_ptr<AccessoryManager>& manager)
    {
        _listener->reports.discovered = [this, manager](const auto& found, auto) {
            const auto aid = std::dynamic_pointer_cast<PL3Accessory>(found);
            if (!aid || aid->orientation() == AccessoryOrientation::unassigned)
                return;
            (aid->orientation() == AccessoryOrientation::left ? _left : _right) = aid;
            if (!_left || !_right)
                return;
            manager->stopScan();
            for (const auto& one : { _left, _right })
                one->connect(_listener, Seconds(5), one->name());
        };
        _listener->reports.services = [this](const auto&) {
            if (_left->dataService() && _right->dataService()) // both are connected
                read(_right, [this] { change(); });
        };
        manager->setScanningDelegate(_listener);
        manager->startScan(Seconds(5));
    }

    bool isDone() const { return _isDone; }

private:
    /// A block is told of the running program, so that is asked for first.
    static void read(const std::shared_ptr<PL3Accessory>& aid, std::function<void()> then)
    {
        const auto ask = [](PL3Command command) { return PL3Request{ .command = command, .read = true }; };
        aid->request({ ask(PL3Command::program), ask(PL3Command::compRatios) }, then);
    }

    void change()
    {
        auto ratios = settings(_right->compRatio(), *_right);
        ratios.ch1
            = static_cast<std::uint8_t>(std::min<std::size_t>(ratios.ch1 + 4u, PL3CompRatio::CX_RATIO.size() - 1));
        _right->request(
            { .command = PL3Command::compRatios, .data = ratios.toData() }, [this](const PL3Result& result) {
                if (!result.isSuccess())
                    return end("P3-R refuses: " + description(result));
                read(_left, [this] { read(_right, [this] { compare(); }); });
            });
    }

    void compare()
    {
        _isDone = _left->compRatio() != _right->compRatio();
        const auto left = settings(_left->compRatio(), *_left).toData();
        const auto right = settings(_right->compRatio(), *_right).toData();
        for (std::size_t i = 0; i < left.size(); ++i)
            if (left[i] != right[i])
                std::cout << "channel " << i + 1 << " compresses by " << inWords(left[i]) << " on the left and "
                          << inWords(right[i]) << " on the right\n";
        end("all other ratios are the same");
    }

    /// A device may hold what the table has no text for; to ask for that would stop the program.
    static std::string inWords(std::uint8_t ratio)
    {
        return ratio < PL3CompRatio::CX_RATIO.size() ? std::string(PL3CompRatio::description(ratio)) : "unknown";
    }

    /// What is known of the running program; the defaults where nothing is.
    template <typename Block> static Block settings(const std::map<int, Block>& known, const PL3Accessory& aid)
    {
        const auto found = known.find(aid.program());
        return found == known.end() ? Block() : found->second;
    }

    void end(const std::string& sentence)
    {
        std::cout << sentence << '\n';
        stopMainQueue();
    }

    std::shared_ptr<Listener> _listener = std::make_shared<Listener>();
    std::shared_ptr<PL3Accessory> _left, _right;
    bool _isDone = false;
};

int main()
{
    setPreconditionPolicy(PreconditionPolicy::contain);
    const auto simulator = Simulator::create(SimulatedWorld::makeDefault());
    const auto manager = AccessoryManager::create(simulator->platform());
    Comparing comparing;
    comparing.begin(manager);
    DispatchQueue::main().asyncAfter(Seconds(10), stopMainQueue); // whatever happens, this is the longest it runs
    runMainQueue();
    return comparing.isDone() ? 0 : 1;
}
