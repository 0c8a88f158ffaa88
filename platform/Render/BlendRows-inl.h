/*
 * The blending of rows for one instruction set: included once by each set's source, inside of its unnamed
 * namespace, after a struct Vector with that set's operations and KOLT_TARGET, which names the set.
 */

struct Sums {
    Vector::Type low;
    Vector::Type high;
};

/* Adds weighted bytes of two rows, which are laid side by side for it. */
KOLT_TARGET inline void addPair(Sums& sums, const uint8_t* a, const uint8_t* b, Vector::Type weights) {
    const Vector::Type x = Vector::load(a);
    const Vector::Type y = Vector::load(b);
    sums.low = Vector::add(sums.low, Vector::weighted(Vector::lowBytesInTurn(x, y), weights));
    sums.high = Vector::add(sums.high, Vector::weighted(Vector::highBytesInTurn(x, y), weights));
}

KOLT_TARGET inline void storeMean(uint8_t* out, const Sums& sums) {
    static_assert(kRowWeight == 128, "the shift");
    Vector::store(out, Vector::pack(Vector::shiftRight<7>(sums.low), Vector::shiftRight<7>(sums.high)));
}

KOLT_TARGET inline Vector::Type weightPair(const uint8_t* weights) {
    return Vector::set(static_cast<int16_t>(weights[0] | weights[1] << 8));
}

/* Asks for bytes that will be wanted; they need not exist. */
inline void ask(const uint8_t* from, size_t ahead) {
    __builtin_prefetch(reinterpret_cast<const void*>( // NOLINT(performance-no-int-to-ptr): may lie outside
        reinterpret_cast<uintptr_t>(from) + ahead));
}

KOLT_TARGET void blend(const uint8_t* const* rows, const uint8_t* weights, size_t taps, uint8_t* out,
                       size_t bytes) {
    const Vector::Type half = Vector::set(kRowWeight / 2);
    // Bytes written to out might be the pointers and weights for all the compiler knows: the common numbers
    // of rows take them out first.
    const Vector::Type w0 = weightPair(weights);
    const uint8_t* a = rows[0];
    const uint8_t* b = rows[1];
    if (taps == 2) {
        for (size_t i = 0; i < bytes; i += Vector::kBytes) {
            Sums sums{half, half};
            addPair(sums, a + i, b + i, w0);
            storeMean(out + i, sums);
        }
        return;
    }
    if (taps == 4) {
        const Vector::Type w1 = weightPair(weights + 2);
        const uint8_t* c = rows[2];
        const uint8_t* d = rows[3];
        // Three lines of a window ahead (the fourth row is mostly the next line's first): arithmetic and
        // memory then work at the same time. Where the rows are new to the processor that saves a tenth of a
        // drawing.
        const size_t ahead = 9 * static_cast<size_t>(b - a);
        for (size_t i = 0; i < bytes; i += Vector::kBytes) {
            ask(a + i, ahead);
            ask(b + i, ahead);
            ask(c + i, ahead);
            Sums sums{half, half};
            addPair(sums, a + i, b + i, w0);
            addPair(sums, c + i, d + i, w1);
            storeMean(out + i, sums);
        }
        return;
    }
    for (size_t i = 0; i < bytes; i += Vector::kBytes) {
        Sums sums{half, half};
        for (size_t tap = 0; tap < taps; tap += 2) {
            addPair(sums, rows[tap] + i, rows[tap + 1] + i, weightPair(weights + tap));
        }
        storeMean(out + i, sums);
    }
}
