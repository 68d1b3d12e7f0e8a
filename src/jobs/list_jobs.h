#pragma once

#include "jobs/job_records.h"

namespace borvan {

// The workers of the register and I2C list jobs. Each makes the final report of its job and clears
// the job flags before it returns. Throws FileError if an opened file can't be read or written.

// Writes a register list. Reports (result, 100) even for a positive result, which is then published
// as a status; only this job does so, and hosts know this.
void RunRegisterWriteJob(RegisterWriteJob& job);

// Reads a run of registers into a file.
void RunRegisterReadJob(RegisterReadJob& job);

// Reads an I2C list file and writes it to the sensor.
void RunI2cWriteJob(I2cWriteJob& job);

// Reads a run of I2C registers into a file.
void RunI2cReadJob(I2cReadJob& job);

}  // namespace borvan
