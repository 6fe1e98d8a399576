#pragma once

// Lets a test set a private member that nothing else can bring to a certain value:
//   QUELLMOOR_PRIVATE_MEMBER(counterOf, Class, Type, m_counter)
// defines Type &counterOf(Class &).
template<auto Member, typename Accessor>
struct PrivateMember
{
    friend constexpr auto memberOf(Accessor) { return Member; }
};

#define QUELLMOOR_PRIVATE_MEMBER(function, Class, Type, member)                                    \
    struct function##Accessor                                                                      \
    {                                                                                              \
        friend constexpr auto memberOf(function##Accessor);                                        \
    };                                                                                             \
    template struct PrivateMember<&Class::member, function##Accessor>;                             \
    static Type &function(Class &object) { return object.*memberOf(function##Accessor()); }
