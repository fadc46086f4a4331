#include "Switch.h"

#if defined(__x86_64__)
asm(R"(
.text
.globl fibersSwitchStacks
.type fibersSwitchStacks, @function
fibersSwitchStacks:
    pushq %rbp
    pushq %rbx
    pushq %r12
    pushq %r13
    pushq %r14
    pushq %r15
    movq %rsp, (%rdi)
    movq %rsi, %rsp
    popq %r15
    popq %r14
    popq %r13
    popq %r12
    popq %rbx
    popq %rbp
    ret
.size fibersSwitchStacks, .-fibersSwitchStacks
)");
#elif defined(__i386__)
asm(R"(
.text
.globl fibersSwitchStacks
.type fibersSwitchStacks, @function
fibersSwitchStacks:
    movl 4(%esp), %eax
    movl 8(%esp), %ecx
    pushl %ebp
    pushl %ebx
    pushl %esi
    pushl %edi
    movl %esp, (%eax)
    movl %ecx, %esp
    popl %edi
    popl %esi
    popl %ebx
    popl %ebp
    ret
.size fibersSwitchStacks, .-fibersSwitchStacks
)");
#else
#error "another processor needs its own switch of stacks"
#endif
