#pragma once
// Families of interchangeable behaviours (info modules, Peek styles, groupers, kinds,
// layouts) collect their members here. A member joins by being defined: its own .cpp
// says BRONDEL_REGISTER(Base, Member), and there is no central list to edit.
// Members are created once, on first use, and sorted by order() then key().

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

template <typename Base>
class Registry {
public:
    using Factory = std::unique_ptr<Base> (*)();

    static bool add(Factory factory)
    {
        factories().push_back(factory);
        return true;
    }

    static const std::vector<std::unique_ptr<Base>>& all()
    {
        static const std::vector<std::unique_ptr<Base>> members = [] {
            std::vector<std::unique_ptr<Base>> list;
            for (Factory f : factories())
                list.push_back(f());
            std::stable_sort(list.begin(), list.end(), [](const auto& a, const auto& b) {
                if (a->order() != b->order())
                    return a->order() < b->order();
                return std::string(a->key()) < std::string(b->key());
            });
            return list;
        }();
        return members;
    }

private:
    static std::vector<Factory>& factories()
    {
        static std::vector<Factory> list;
        return list;
    }
};

#define BRONDEL_REGISTER_CAT2(a, b) a##b
#define BRONDEL_REGISTER_CAT(a, b) BRONDEL_REGISTER_CAT2(a, b)
#define BRONDEL_REGISTER(Base, Member)                                                              \
    namespace {                                                                                     \
    [[maybe_unused]] const bool BRONDEL_REGISTER_CAT(s_registered_, __LINE__) =                     \
        Registry<Base>::add([]() -> std::unique_ptr<Base> { return std::make_unique<Member>(); }); \
    }
