/* The measured loop for the other simulator: CRC-32, bit by bit, over a buffer in RAM. */
#include <avr/interrupt.h>
#include <avr/sleep.h>
#include <stdint.h>

static volatile uint8_t buffer[256];
volatile uint32_t result;

int main(void)
{
    uint8_t i, bit;
    uint16_t round;
    for (i = 0; i < 255; i++)
        buffer[i] = i;
    for (round = 0; round < 100; round++) {
        uint32_t crc = 0xFFFFFFFF;
        for (i = 0; i < 255; i++) {
            crc ^= buffer[i];
            for (bit = 0; bit < 8; bit++)
                crc = crc & 1 ? crc >> 1 ^ 0xEDB88320 : crc >> 1;
        }
        result = crc;
    }
    cli();
    sleep_cpu();
    return 0;
}
