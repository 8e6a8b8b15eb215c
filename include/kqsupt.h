/** @file
 * The whole interface of libkqsupt. */
#ifndef KQSUPT_H
#define KQSUPT_H

#include <kqsupt/config.h>
#include <kqsupt/containers.h>
#include <kqsupt/frame.h>
#include <kqsupt/ipc.h>
#include <kqsupt/log.h>
#include <kqsupt/net.h>
#include <kqsupt/os.h>
#include <kqsupt/sdo.h>
#include <kqsupt/text.h>

#endif
