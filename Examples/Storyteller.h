#pragma once

#include "Listener.h"

#include <AuriskSDK/AuriskSDK.h>

#include <fmt/core.h>

#include <cstdio>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

/// Plays the steps of a story one after another on the main queue. A step does something, waits for a report of the
/// library, and calls `next()` or `fail()`; where it does neither within its limit, the story has failed.
class Storyteller : public std::enable_shared_from_this<Storyteller> {
public:
    virtual ~Storyteller() = default;

    /// Calls `ended` once.
    void begin(std::function<void(bool succeeded)> ended)
    {
        _ended = std::move(ended);
        _steps = steps();
        play(0);
    }

protected:
    struct Step {
        std::string title;
        std::function<void()> play;
        aurisk::Seconds limit{ 0 };
        std::string whatIsMissing; ///< where nothing has come within the limit
    };

    virtual std::vector<Step> steps() = 0;

    /// Hears all that the library reports.
    const std::shared_ptr<Listener>& listener() const { return _listener; }

    /// The reports that the present step waits for.
    Listener::Reports& hear() { return _listener->reports; }

    static void say(const std::string& line)
    {
        fmt::print("{}\n", line);
        std::fflush(stdout);
    }

    /// The step has come to its end; the next one begins after a pause for the reader.
    void next()
    {
        turnThePage();
        if (_step + 1 < _steps.size())
            return later(pauseForTheReader, [this] { play(_step + 1); });
        say("\nThe end: all that was set was also reported.");
        end(true);
    }

    void fail(std::string why)
    {
        if (why.ends_with('.')) // the platform's errors are whole sentences
            why.pop_back();
        fmt::print(stderr, "\nThe story failed at \"{}\": {}.\n", _steps[_step].title, why);
        end(false);
    }

    /// `work`, as long as the page has not been turned.
    template <typename Function> auto onThisPage(Function work)
    {
        return [weak = weak_from_this(), page = _page, work = std::move(work)](auto&&... values) {
            if (const auto self = weak.lock(); self && self->_page == page)
                work(values...);
        };
    }

private:
    static constexpr aurisk::Seconds pauseForTheReader{ 2 };

    void play(std::size_t number)
    {
        _step = number;
        turnThePage();
        const auto& step = _steps[number];
        say(fmt::format("\n{}. {}", number + 1, step.title));
        later(step.limit,
            [this, &step] { fail(fmt::format("{} within {} seconds", step.whatIsMissing, step.limit.count())); });
        step.play();
    }

    void end(bool succeeded)
    {
        turnThePage();
        hear() = {};
        if (const auto ended = std::exchange(_ended, nullptr))
            ended(succeeded);
    }

    /// What was waited for until now is waited for no longer. A link that goes away unasked ends the story at any time.
    void turnThePage()
    {
        ++_page;
        hear() = {};
        hear().disconnected = [this](const aurisk::MaybeError& error) {
            fail("the connection was lost: " + (error ? error->localizedDescription : "nobody says why"));
        };
    }

    void later(aurisk::Seconds delay, std::function<void()> work)
    {
        aurisk::DispatchQueue::main().asyncAfter(delay, onThisPage(std::move(work)));
    }

    std::shared_ptr<Listener> _listener = std::make_shared<Listener>();
    std::vector<Step> _steps;
    std::size_t _step = 0;
    int _page = 0;
    std::function<void(bool)> _ended;
};
