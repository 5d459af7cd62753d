-- Fills an empty database with a skewed population: psql -v rows=10000000 -f fill.sql
--
-- `rows` is about the number of rows of device_app_hour_counts. Nearly half of them belong to one account
-- (heavy1) that uses 25 applications in every hour of every day on two devices, a tenth to two others
-- (heavy2, heavy3) with ten hours and twelve applications; the years of all three are rows / 1,000,000. The
-- rest are people (person0 and on) with one device, a month, four hours a day and three applications, a
-- third of them this month. Days are written one after the other with all accounts mixed, as they would
-- arrive, so an account's rows are scattered over the table. The last day is 2026-03-05.
\set ON_ERROR_STOP 1
SELECT set_config('fill.rows', :'rows', false) \gset fill_
SET synchronous_commit = off;
-- Compiling each day's statement takes longer than running it.
SET jit = off;
-- Triggers are off, because these accounts stay within their bounds.
SET session_replication_role = replica;
SET search_path = public;

CREATE FUNCTION pg_temp.device(account text, number integer) RETURNS text LANGUAGE sql IMMUTABLE AS $$
    SELECT md5(account || number)::uuid::text
$$;

CREATE TEMP TABLE population AS
WITH sizes AS (
    SELECT current_setting('fill.rows')::bigint AS rows,
        greatest(current_setting('fill.rows')::bigint * 3652 / 10000000, 31)::integer AS heavy_days
)
SELECT 'heavy1@example.org' AS email, heavy_days - 1 AS first_back, 0 AS last_back, 2 AS devices, 24 AS hours, 25 AS apps
FROM sizes
UNION ALL
SELECT format('heavy%s@example.org', n), heavy_days - 1, 0, 1, 10, 12 FROM sizes, generate_series(2, 3) AS n
UNION ALL
SELECT format('person%s@example.org', n), back + 29, back, 1, 4, 3
FROM sizes,
    generate_series(0, (rows - heavy_days * (1200 + 240)) / 360 - 1) AS n,
    LATERAL (SELECT CASE n % 3 WHEN 0 THEN 0 ELSE (n * 7919 % greatest(heavy_days - 30, 1))::integer END AS back) AS b;
ANALYZE population;

DO $$
DECLARE
    today date := DATE '2026-03-05';
    back integer;
BEGIN
    FOR back IN REVERSE (SELECT max(first_back) FROM population)..0 LOOP
        INSERT INTO device_app_hour_counts (customer_email, device_id, day, hour, bundle_id, count, updated_at)
        SELECT p.email, pg_temp.device(p.email, device), today - back, 23 - hour, format('org.example.Application%s', app),
            (back * 31 + hour * 7 + app * 13) % 400 + 1, today - back + make_interval(hours => 24 - hour)
        FROM population AS p, generate_series(1, p.devices) AS device, generate_series(0, p.hours - 1) AS hour,
            generate_series(1, p.apps) AS app
        WHERE back BETWEEN p.last_back AND p.first_back
        ORDER BY hour DESC, md5(p.email), app;
        COMMIT;
    END LOOP;
END
$$;

INSERT INTO device_hour_counts (customer_email, device_id, day, hour, count, updated_at)
SELECT customer_email, device_id, day, hour, sum(count), max(updated_at) FROM device_app_hour_counts
GROUP BY customer_email, device_id, day, hour ORDER BY day, hour;
INSERT INTO device_day_counts (customer_email, device_id, day, count, updated_at)
SELECT customer_email, device_id, day, sum(count), max(updated_at) FROM device_hour_counts
GROUP BY customer_email, device_id, day ORDER BY day;
INSERT INTO device_app_registry (customer_email, bundle_id, app_name, is_hidden, updated_at)
SELECT email, format('org.example.Application%s', app), format('Application %s', app), false, '2026-03-05 14:07:09Z'
FROM population, generate_series(1, apps) AS app ORDER BY md5(email), app;
INSERT INTO devices (customer_email, device_id, device_name, last_seen_at)
SELECT email, pg_temp.device(email, device), format('machine-%s', device), '2026-03-05 14:07:09Z'
FROM population, generate_series(1, devices) AS device ORDER BY md5(email);
