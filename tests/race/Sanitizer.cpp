/// How the thread sanitizer of these tests looks: also at the order in which locks are taken, and
/// of an order that could stop two threads it tells both places.
extern "C" const char* __tsan_default_options() {
    return "detect_deadlocks=1:second_deadlock_stack=1";
}
