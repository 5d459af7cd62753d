// The twelve requests through PostgREST's own client: node twelve.mjs CLIENT URL KEY. Prints the answers as JSON.
import { createRequire } from "node:module";
const [client, url, key] = process.argv.slice(2);
const { PostgrestClient } = createRequire(import.meta.url)(client);
const backend = new PostgrestClient(url, { headers: { apikey: key, Authorization: `Bearer ${key}` } });

const account = { customer_email: "jo+b&c%d é@x" };
const device = { ...account, device_id: "first" };
const day = { day: "2026-03-05" };
const count = { count: 7, updated_at: "2026-03-05T14:07:09Z" };
const upsert = (table, keys, row) =>
  backend.from(table).upsert({ ...keys, ...row }, { onConflict: Object.keys(keys).join(",") });
const call = (name, given) => backend.rpc(`get_account_${name}`, { p_email: account.customer_email, ...given });
const today = { p_day: day.day };
const range = { p_days: 30, p_end_day: day.day };

const answers = [];
for (const request of [
  upsert("device_day_counts", { ...device, ...day }, count),
  upsert("device_hour_counts", { ...device, ...day, hour: 14 }, count),
  upsert("device_app_hour_counts", { ...device, ...day, hour: 14, bundle_id: "org.Editor" }, count),
  upsert("device_app_registry", { ...account, bundle_id: "org.Editor" },
    { app_name: "Éditeur", is_hidden: false, updated_at: count.updated_at }),
  upsert("devices", device, { device_name: "laptop", last_seen_at: count.updated_at }),
  backend.from("device_day_counts").select("count").eq("customer_email", device.customer_email)
    .eq("device_id", "first").eq("day", day.day),
  call("today_total", today), call("daily_totals", range), call("hourly_totals", today),
  call("app_hourly_totals", today), call("app_daily_totals", range), call("devices", {}),
  // Not of the twelve: PostgREST would act on each.
  backend.from("device_day_counts").select("count", { count: "exact" }).eq("device_id", "first"),
  backend.from("device_day_counts").select("count").eq("device_id", "first").single(),
  backend.from("devices").select().csv(),
  call("daily_totals", range).limit(1),
]) {
  const { status, data } = await request;
  answers.push([status, data]);
}
console.log(JSON.stringify(answers));
