// Two peripherals behind the register window of the simulator: a UART that prints, a timer that
// interrupts. Register numbers are (index << 4) | module.

var UART_DATA = 0x00;   // module 0, index 0: a write sends a character, a read tells how many were sent
var TIMER_RELOAD = 0x01; // module 1, index 0: polls between two interrupts, 0 stops the timer
var TIMER_REQUEST = 1 << 1; // the timer's bit among the interrupt requests

var sent = 0;
var reload = 0;
var left = 0;

function reset()
{
    sent = 0;
    reload = 0;
    left = 0;
    return 0;
}

function connect(name)
{
    return 0;
}

function loadPeripheral(address, size, flag)
{
    if (address == UART_DATA)
        return sent;
    if (address == TIMER_RELOAD)
        return reload;
    return 0;
}

function storePeripheral(address, size, value)
{
    if (address == UART_DATA) {
        WScript.Echo(String.fromCharCode(value & 0xFF));
        ++sent;
    } else if (address == TIMER_RELOAD) {
        reload = value;
        left = value;
    }
    return 0;
}

function pollForInterrupts(requests)
{
    if (reload == 0 || --left > 0)
        return requests;
    left = reload;
    return requests | TIMER_REQUEST;
}
