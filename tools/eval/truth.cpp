// SPDX-License-Identifier: MIT
//
// Files of truth, and by which rules they count.
#include "eval/truth.h"

#include "cli/command_line.h"
#include "mot/seqinfo.h"

namespace zeltrack {

void declare_rules(command_line& line, rules_choice& rules)
{
    line.choice("--rules", rules,
                {{"auto", rules_choice::automatic},
                 {"mot15", rules_choice::mot15},
                 {"mot17", rules_choice::mot17},
                 {"mot20", rules_choice::mot20}},
                "which rows count: with mot15 all that GT marks; with "
                "mot17 and mot20 only class 1 of it, and no track on a "
                "distractor. auto is mot17 if GT has classes");
}

static score_rules rules_for(rules_choice choice, const score_file& truth, const std::string& name)
{
    switch (choice) {
    case rules_choice::mot15:
        return score_rules::mot15;
    case rules_choice::mot17:
        return score_rules::mot17;
    case rules_choice::mot20:
        return score_rules::mot20;
    case rules_choice::automatic:
        break;
    }
    return rules_of(truth, name);
}

sequence_truth load_sequence_truth(const sequence_files& files, rules_choice rules, int frame_base)
{
    sequence_truth truth;
    truth.file = load_truth_rows(files.truth, frame_base);
    truth.rules = rules_for(rules, truth.file, files.name);
    if (truth.rules != score_rules::mot15 && truth.file.no_class)
        throw failure(truth.file.name + ":" + to_text(truth.file.no_class->line) + ": " + truth.file.no_class->text);
    truth.told = files.info.empty() ? 0 : load_sequence_info(files.info).frames;
    return truth;
}

void refuse_fault(const std::optional<row_fault>& fault, const score_file& file, int length)
{
    if (fault)
        throw failure(text_of(*fault, file, length));
}

void sequence_truth::give_to(scorer& subject, int length) const
{
    refuse_fault(subject.set_truth(file.rows.data(), file.rows.size(), rules, length), file, length);
}

}  // namespace zeltrack
