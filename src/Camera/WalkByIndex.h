// A walk over a list that others may change meanwhile.
#pragma once

enum class WalkEnd {
    All,     // to the end
    Stopped, // the visitor had enough
    Missing  // an entry went after the list had been counted
};

// Visits what `at(index)` gives, from 0 up to `count()`, which is asked again at each step. `visit` answers
// false to stop.
template<typename Count, typename At, typename Visit>
WalkEnd WalkByIndex(Count count, At at, Visit visit) {
    for (int index = 0; index < count(); ++index) {
        auto&& entry = at(index);
        if (!entry)
            return WalkEnd::Missing;
        if (!visit(entry))
            return WalkEnd::Stopped;
    }
    return WalkEnd::All;
}
