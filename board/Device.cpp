#include "board/Device.h"

namespace board {

namespace {
constexpr uint8_t StartBootloader = 1;
}

Device::Device(const Settings& settings, Journal& journal)
    : m_settings(settings), m_journal(journal), m_processor(settings.codeBytes, settings.dataBytes),
      m_flash(m_processor.core(), settings.deadCells), m_debug(m_processor, m_flash, journal),
      m_bootloader(m_settings, m_flash, journal), m_tap(*this)
{
}

void Device::pulseTCK()
{
    if (isPowered())
        m_tap.clock(m_tms, m_tdi);
}

bool Device::tdo() const
{
    return m_settings.stuckTDO.value_or(m_tap.tdo());
}

void Device::setReset(bool level)
{
    if (!isPowered() || level == m_reset)
        return;
    m_reset = level;
    if (!level) {
        m_inBootloader = false;
        m_debug.reset();
        m_processor.holdReset();
        return;
    }
    m_inBootloader = m_tap.systemProgramming() == StartBootloader;
    m_journal.note(m_inBootloader ? "device: starts the bootloader" : "device: starts the program");
    if (m_inBootloader)
        m_bootloader.start();
    m_processor.release(!m_inBootloader);
}

void Device::run(uint64_t steps)
{
    if (isPowered())
        m_processor.run(steps);
}

uint16_t Device::captureChannel()
{
    return m_inBootloader ? m_bootloader.capture() : m_debug.capture();
}

void Device::updateChannel(uint8_t byte)
{
    if (m_inBootloader)
        m_bootloader.update(byte);
    else
        m_debug.update(byte);
}

void Device::restartChannel()
{
    m_debug.restart();
}

} // namespace board
