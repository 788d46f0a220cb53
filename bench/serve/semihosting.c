/* The same two programs for a Cortex-M3 with semihosting: COUNT requests, or COUNT lines with LINES. */
static int call(int operation, const void *argument)
{
    register int r0 __asm__("r0") = operation;
    register const void *r1 __asm__("r1") = argument;
    __asm__ volatile("bkpt 0xAB" : "+r"(r0) : "r"(r1) : "memory");
    return r0;
}

enum { WRITE0 = 0x04, ERRNO = 0x13, EXIT = 0x18 };

void reset(void)
{
    for (volatile int i = 0; i < COUNT; ++i)
#ifdef LINES
        call(WRITE0, "0123456789012345678901234567890123456789\n");
#else
        call(ERRNO, 0);
#endif
    call(EXIT, (void *)0x20026);
    for (;;)
        ;
}

__attribute__((section(".vectors"))) const void *vectors[] = {(void *)0x20010000, reset};
