// What the operators are tried on: a function for each, and what they leave alone.
#define TWICE(x) ((x) + (x))

enum class Result { good, bad = 4 };

template <int size>
struct Holder {
    int values[size];
    int first = 1;
};

struct Text {
    bool operator==(const Text&) const = default;
    bool operator<(const Text& other) const;
};

void call(int value = 3);
Text text_of(int number);
Result result_of(int number);

static_assert(sizeof(Holder<4>) == 5 * sizeof(int)); // 1 < 2
constexpr unsigned mask = 0x0Fu;

bool comparisons(int a, int b, Text c, Text d) {
    return a < b || a == b || c < d;
}

int arithmetic(int a, int b) {
    a += b;
    return a * b - a % b;
}

unsigned bits(unsigned a, unsigned b) {
    a <<= 2;
    return a & ~b;
}

bool logic(bool a, bool b) {
    return a /* || */ && !b;
}

int constants(bool flag) {
    Holder<8> holder{};
    const double half = 0.5;
    const char* const text = "1 < 2";
    return flag == true ? holder.values[7] : static_cast<int>(half) + text[0];
}

void conditions(bool is_set, Holder<2>* holder) {
    if (is_set) {
        return;
    }
    while (holder->first) {
        --holder->first;
    }
}

void statements(int a, Text* text) {
    int b = TWICE(a);
    b = a;
    call(b);
    if (a > 100)
        call();
    TWICE(a);
    delete text;
}

Result enumerator() {
    return result_of(mask);
}

Text record() {
    return text_of(1);
}

bool truth(bool (*ask)()) {
    return ask();
}

int number(int (*ask)()) {
    call(1);
    call(1);
    return ask();
}
