#include "Tools/aurisk/EqPlot.h"
#include "Tools/aurisk/SettingsAccess.h"

#include <fmt/format.h>

namespace aurisk::tool {

namespace {

/// The gain that a label says: `-6 dB`.
int decibelsOf(const std::string& label) { return std::stoi(label); }

void show(Session& session, int program, const SettingsBlock& block)
{
    const auto& field = *fieldOf(block, "equalizerArray");
    auto raws = Json::array(), gains = Json::array();
    for (std::size_t band = 0; band < field.size; ++band) {
        const int raw = field.get(block, band);
        raws.push_back(raw);
        gains.push_back(decibelsOf(field.label(raw)));
    }
    const Fields fields
        = { { .key = "program", .value = program }, { .key = "frequences", .value = frequenciesOf(block) },
              { .key = "raw", .value = raws }, { .key = "dB", .value = gains } };
    session.picture(fmt::format("equaliser of program {}", program), fields, eqPlot(block, session.style().drawing));
}

void playShow(Session& session)
{
    chooseProgram(session, [](Session& self, int program) {
        readBlock(self, { program }, [program](Session& again, const SettingsBlock& block) {
            show(again, program, block);
            again.finish();
        });
    });
}

/// Shows what is called `name` of those that several fields make up.
Plan planDerived(const Options& options, std::string_view name)
{
    if (options.action == Action::set)
        return planChange(options, BlockKind::program, fieldEdit);
    const auto play = [name](Session& session) {
        chooseProgram(session, [name](Session& self, int program) {
            readBlock(self, { program }, [=](Session& again, const SettingsBlock& block) {
                for (const auto& derived : derivedOf(block))
                    if (derived.name == name)
                        again.line({ { .key = std::string(name),
                                         .value = derived.value,
                                         .label = std::string(name),
                                         .text = derived.text },
                            { .key = "program",
                                .value = program,
                                .label = "program",
                                .text = std::to_string(program) } });
                again.finish();
            });
        });
    };
    return { .play = play, .check = whyWithoutSettings };
}

} // namespace

Plan planEq(const Options& options)
{
    if (options.action == Action::set)
        return planChange(options, BlockKind::program, equalizerEdit);
    return { .play = playShow, .check = whyWithoutSettings };
}

Plan planNoise(const Options& options) { return planDerived(options, "noise"); }

Plan planDirection(const Options& options) { return planDerived(options, "direction"); }

} // namespace aurisk::tool
