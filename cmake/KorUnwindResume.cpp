// At the end of a cleanup GCC calls __cxa_end_cleanup on 32-bit ARM, which takes the exception off
// the list of those that travel and goes on by _Unwind_Resume; but in code that it optimises at link
// time it calls the latter at once. An exception that stays on the list ends the process when its
// thread is cancelled later. The linker gives this function to such calls (--wrap). It is a jump,
// because both take the registers of whoever calls them for those of the function that cleaned up.
asm(R"(
    .section .text.__wrap__Unwind_Resume, "ax", %progbits
    .arm
    .balign 4
    .globl __wrap__Unwind_Resume
    .hidden __wrap__Unwind_Resume
    .type __wrap__Unwind_Resume, %function
__wrap__Unwind_Resume:
    b __cxa_end_cleanup(PLT)
    .size __wrap__Unwind_Resume, . - __wrap__Unwind_Resume
)");
