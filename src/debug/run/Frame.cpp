#include "debug/run/Frame.h"

#include "target/TargetRegisterInterface.h"

Frame::~Frame()
{
    if (!m_live)
        delete m_registers;
}
