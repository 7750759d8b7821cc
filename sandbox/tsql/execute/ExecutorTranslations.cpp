// Translations of statements, which are kept for their next run.
#include "execute/Executor.h"

namespace tsql {

// Returns the translation in `place` if it still holds, else the one that `translate` makes.
TranslatedPtr Executor::translated(Translation& place, const Translate& translate, const MaybeType& type,
                                   Translator* merge) {
    constexpr std::size_t kLongestKept = 32'768;
    const auto known = this->known();
    const auto& [quoted, most] = std::tie(m_settings.quotedIdentifiers, m_settings.mostRows);
    Circumstances now{known->number, databaseOf({}), m_frames.back()->schemaName, quoted, most, type};
    const bool isFixed = !merge && !awaitsTransaction();  // by the first use of a table
    if (auto kept = place.lock(); kept && isFixed && kept->circumstances == now) return kept;
    // Not by make_shared(): the pointer in the tree would hold the memory of what is forgotten.
    const std::shared_ptr<Translated> made(
        new Translated{std::move(now), merge ? *merge : Translator(*this, /*binds=*/true)});
    made->text = translate(made->translator);
    made->columns = made->text.shown();
    if (merge || !made->translator.isLasting() || made->text.sql.size() > kLongestKept) return made;
    known->translations.push_back(made);
    place = made;
    return made;
}

TranslatedPtr Executor::translated(const Expr& expr, const MaybeType& type) {
    const auto translate = [&](Translator& translator) {
        if (expr.isCondition()) return QueryText{"SELECT " + translator.condition(expr), {{}}};
        const Typed value = translator.value(expr), wanted = type ? coerce(value, *type) : value;
        return QueryText{"SELECT " + wanted.sql, {{{{}, wanted.type}}}};
    };
    return translated(expr.translation, translate, type);
}

TranslatedPtr Executor::translated(const Query& query) {
    return translated(query.translation, [&](Translator& translator) { return translator.query(query); });
}

}  // namespace tsql
