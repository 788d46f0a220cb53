// Functions for the target scripts of the project's properties.

// Fills a part of data memory with one byte and checks that it took.
function fill(address, count, value)
{
    TargetInterface.message("filling " + count + " bytes at 0x" + address.toString(16));
    for (var i = 0; i < count; ++i)
        TargetInterface.pokeByte(address + i, value);
    if (TargetInterface.peekByte(address + count - 1) != (value & 0xFF))
        TargetInterface.error("data memory at 0x" + address.toString(16) + " does not take");
}
